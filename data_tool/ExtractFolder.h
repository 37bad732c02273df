#pragma once

#include "io/ZPDataCursor.h"

#include <filesystem>
#include <map>
#include <optional>

/// The folder that files are extracted to, with folders of its own for archives and classes. No
/// symbolic link below it is followed, so that nothing is written elsewhere.
///
/// A file gets its name when it is whole and has its date: one with the right date and size was
/// written by an earlier run, and needs not be written again.
class ExtractFolder {
  public:
    /// Creates the folder if need be. Throws CommandFailure when it cannot.
    explicit ExtractFolder(const std::filesystem::path &path);
    ~ExtractFolder();
    ExtractFolder(const ExtractFolder &) = delete;
    ExtractFolder &operator=(const ExtractFolder &) = delete;

    /// The descriptor of a folder below, made if need be; an empty name is left out. Throws
    /// CommandFailure when it cannot be made or is no folder.
    int folder(const std::string &archive, const std::string &className);

    /// Whether the file is there with this date and, where it is known, size. Never for a file
    /// without a date.
    static bool hasFile(int folder, const std::string &name, std::uint32_t mtime,
                        std::optional<std::uint64_t> size);
    /// Empty when it was written, else the system's words. Without a date it keeps today's.
    static std::string writeFile(int folder, const std::string &name,
                                 std::span<const std::byte> bytes, std::uint32_t mtime);

  private:
    int openFolder(int parent, const std::string &name);

    std::filesystem::path _path;
    int _root;
    /// By "archive/class".
    std::map<std::string, int> _folders;
};
