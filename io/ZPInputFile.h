#pragma once

#include "io/ZPError.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>

/// A file, pipe or device that is read once, from its beginning to its end, and counts as an input
/// of the run from then on. Opening it waits for nobody: a pipe that nobody writes to is empty.
class ZPInputFile {
  public:
    explicit ZPInputFile(const std::filesystem::path &path);
    /// Standard input, say; stays open.
    explicit ZPInputFile(int descriptor) : _descriptor(descriptor), _isOwned(false) {}
    ~ZPInputFile();
    ZPInputFile(const ZPInputFile &) = delete;
    ZPInputFile &operator=(const ZPInputFile &) = delete;

    /// How many bytes were read, 0 at the end. None, with an error of the POSIX domain, when the
    /// file could not be opened or read, a directory included.
    [[nodiscard]] std::optional<std::size_t> read(std::span<char> bytes, ZPError *error = nullptr);

  private:
    int _descriptor;
    bool _isOwned = true;
    int _openFailure = 0;
};

/// The bytes that a regular file begins with, at most as many as there is room for; nothing of what
/// cannot be read or is no regular file. Reading them makes it no input.
std::optional<std::span<const std::byte>> ZPReadBeginning(const std::filesystem::path &path,
                                                          std::span<std::byte> room);
