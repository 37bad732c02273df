#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Something that is wrong with an archive.
struct Finding {
    enum class Severity { error, warning };

    Severity severity;
    /// What is wrong in general; findings are counted by it.
    const char *kind;
    /// Of the file concerned, if it is one.
    std::optional<std::uint32_t> identifier;
    /// Where in the archive.
    std::uint64_t offset;
    std::string cause;
};

using Findings = std::vector<Finding>;

// Kinds of findings.
inline constexpr char kHeaderFinding[] = "header";
inline constexpr char kDirectoryFinding[] = "directory";
inline constexpr char kOrderFinding[] = "order";
inline constexpr char kFreeChainFinding[] = "free chain";
inline constexpr char kFileChainFinding[] = "file chain";
inline constexpr char kSizeFinding[] = "size";
inline constexpr char kSharedFinding[] = "shared block";
inline constexpr char kLostFinding[] = "lost block";
inline constexpr char kRecordFinding[] = "record";
inline constexpr char kIdentifierFinding[] = "identifier";
