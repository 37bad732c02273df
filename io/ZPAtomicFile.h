#pragma once

#include "io/ZPError.h"
#include "io/ZPTemporaryName.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

struct stat;

/// A file that appears under its name only when it is whole: bytes go to a file without a name in
/// the target's folder, which `commit` puts in the target's place. Whatever ends the process before
/// leaves nothing behind. Where the file system has no files without a name, the bytes go to one
/// with a name of its own, which is removed unless SIGKILL or a fault ends the process.
///
/// Symbolic links are followed, and a file that is replaced hands its mode on, and its owner where
/// the system allows that. A target that is there and no regular file, such as a device or a pipe,
/// is written to directly, and so is an open file of a process (/dev/stdout). Nothing waits for the
/// disk: after a power failure a file may be the old one, or whatever the file system makes of it.
///
/// What ZPMayWrite keeps is not written over: it is asked by `open` and again by `commit`.
class ZPAtomicFile {
  public:
    enum class Temporary { nameless, named };

    /// `named` is for file systems that do not say by themselves that they need it.
    explicit ZPAtomicFile(std::filesystem::path path, Temporary temporary = Temporary::nameless);
    ~ZPAtomicFile();
    ZPAtomicFile(const ZPAtomicFile &) = delete;
    ZPAtomicFile &operator=(const ZPAtomicFile &) = delete;

    // Each operation is false, with an error of the POSIX domain, when the system refuses it, or of
    // the gate's when that does. That discards what was written, and every later operation fails
    // with the same error.

    /// Comes first, and once.
    [[nodiscard]] bool open(ZPError *error = nullptr);
    [[nodiscard]] bool write(std::span<const std::byte> bytes, ZPError *error = nullptr);
    /// Overwrites bytes already written, from `offset` on; the write position stays where it was.
    [[nodiscard]] bool rewriteAtOffset(std::uint64_t offset, std::span<const std::byte> bytes,
                                       ZPError *error = nullptr);
    /// Not of what is written to directly, which has its own.
    [[nodiscard]] bool setModificationTime(const timespec &time, ZPError *error = nullptr);
    /// Closes the file and gives it its name. Comes last.
    [[nodiscard]] bool commit(ZPError *error = nullptr);

  private:
    bool fail(ZPError failure, ZPError *error);
    bool fail(int number, ZPError *error);
    bool hasFailed(ZPError *error) const;
    void discard();
    bool openNameless();
    bool openNamed();
    bool takeAttributes(const struct stat &target);
    bool takeName();

    const std::filesystem::path _givenPath;
    /// Where its links lead.
    std::filesystem::path _path;
    Temporary _temporary;
    bool _replacesFile = false;
    bool _isNameless = false;
    std::unique_ptr<ZPTemporaryName> _name;
    int _descriptor = -1;
    /// Where the bytes begin in a target that is written to directly.
    std::uint64_t _start = 0;
    std::optional<ZPError> _failure;
};

/// Writes a whole text, atomically.
[[nodiscard]] bool ZPWriteTextToPath(std::string_view text, const std::filesystem::path &path,
                                     ZPError *error = nullptr);
