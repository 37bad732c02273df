#pragma once

#include "io/ZPError.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

/// A file that appears under its name only when it is whole: bytes go to a temporary file beside
/// the target, which `commit` renames over it. Without a commit the temporary file is removed, also
/// when SIGINT, SIGTERM or SIGHUP ends the process. Only one is open at a time in a process.
///
/// A target that is there and no regular file, such as a device or a pipe, is written to directly.
class ZPAtomicFile {
  public:
    explicit ZPAtomicFile(std::filesystem::path path);
    ~ZPAtomicFile();
    ZPAtomicFile(const ZPAtomicFile &) = delete;
    ZPAtomicFile &operator=(const ZPAtomicFile &) = delete;

    /// Creates the temporary file. Each operation is false, with an error of the POSIX domain, when
    /// the system refuses it; after that the temporary file is gone.
    bool open(ZPError *error = nullptr);
    bool write(std::span<const std::byte> bytes, ZPError *error = nullptr);
    /// Overwrites bytes already written; the write position stays where it was.
    bool rewriteAtOffset(std::uint64_t offset, std::span<const std::byte> bytes,
                         ZPError *error = nullptr);
    /// Closes the file and gives it its name.
    bool commit(ZPError *error = nullptr);

  private:
    bool failWithErrno(ZPError *error);
    void discard();

    std::filesystem::path _path;
    std::string _temporaryPath;
    int _descriptor = -1;
};

/// Writes a whole text, atomically.
bool ZPWriteTextToPath(std::string_view text, const std::filesystem::path &path,
                       ZPError *error = nullptr);
