#pragma once

#include "io/ZPData.h"
#include "io/ZPError.h"

#include <filesystem>
#include <map>
#include <optional>
#include <span>

/// The folder that files are extracted to, with folders of its own for archives and classes. No
/// link below it, symbolic or hard, is written through, so that nothing changes elsewhere.
///
/// A file gets its date last. One with the right date and size is whole therefore, whatever ended
/// the run that wrote it, and needs not be written again.
class ExtractFolder {
  public:
    enum class Outcome { written, wasThere, failed };

    explicit ExtractFolder(std::filesystem::path path) : _path(std::move(path)) {}
    ~ExtractFolder();
    ExtractFolder(const ExtractFolder &) = delete;
    ExtractFolder &operator=(const ExtractFolder &) = delete;

    /// The descriptor of a folder below, made if need be with those above it; an empty name is left
    /// out. Valid as long as this. Throws CommandFailure when it cannot be made or is no folder.
    [[nodiscard]] int folder(const std::string &archive, const std::string &className);

    /// Whether the file is there with this date, in seconds since 1970, and, where it is known,
    /// this size. Never for a file without a date, which is 0.
    [[nodiscard]] static bool hasFile(int folder, const std::string &name, std::uint32_t mtime,
                                      std::optional<std::uint64_t> size);
    /// Leaves a file alone that is there whole, unless it is to be written `again`; anything else
    /// of that name but a folder is replaced. Without a date a new file keeps today's.
    [[nodiscard]] static Outcome writeFile(int folder, const std::string &name,
                                           std::span<const std::byte> bytes, std::uint32_t mtime,
                                           bool again, ZPError *error = nullptr);

  private:
    int openFolder(int parent, const std::string &name);

    std::filesystem::path _path;
    /// By "/archive/class"; the root's name is empty.
    std::map<std::string, int> _folders;
};
