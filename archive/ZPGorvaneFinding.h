#pragma once

#include "io/ZPSystemLog.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Something that is wrong with an archive, or with a record in it.
struct ZPGorvaneFinding {
    enum class Severity { error, warning };

    Severity severity;
    /// What is wrong in general; findings are counted by it.
    const char *kind;
    /// Of the file concerned, if it is one.
    std::optional<std::uint32_t> identifier;
    /// Where in the archive.
    std::uint64_t offset;
    std::string cause;
    /// Path of the archive; empty for one that was opened without.
    std::string archive{};

    /// The cause, after the file's identifier where there is one.
    std::string text() const;
};

inline std::string ZPGorvaneFinding::text() const {
    return identifier ? ZPFormat("%08x: ", *identifier) + cause : cause;
}

using ZPGorvaneFindings = std::vector<ZPGorvaneFinding>;

// Kinds of findings.
inline constexpr char kZPGorvaneHeaderFinding[] = "header";
inline constexpr char kZPGorvaneDirectoryFinding[] = "directory";
inline constexpr char kZPGorvaneOrderFinding[] = "order";
inline constexpr char kZPGorvaneFreeChainFinding[] = "free chain";
inline constexpr char kZPGorvaneFileChainFinding[] = "file chain";
inline constexpr char kZPGorvaneSizeFinding[] = "size";
inline constexpr char kZPGorvaneSharedFinding[] = "shared block";
inline constexpr char kZPGorvaneLostFinding[] = "lost block";
inline constexpr char kZPGorvaneRecordFinding[] = "record";
inline constexpr char kZPGorvaneIdentifierFinding[] = "identifier";
