#pragma once

#include "io/ZPError.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

/// A file opened for reading and mapped into memory, under a shared lock for as long as it lives.
class ZPFileHandle {
  public:
    /// Null, with an error of the POSIX domain, when the file cannot be opened or mapped, or when
    /// another process holds it exclusively: that fails at once and does not wait.
    static std::unique_ptr<ZPFileHandle> fileHandleAtPath(const std::filesystem::path &path,
                                                          ZPError *error = nullptr);
    ~ZPFileHandle();
    ZPFileHandle(const ZPFileHandle &) = delete;
    ZPFileHandle &operator=(const ZPFileHandle &) = delete;

    /// The whole file as it was when it was opened; valid while the handle lives.
    std::span<const std::byte> bytes() const { return _bytes; }

    /// See ZPReadAhead.
    void readAhead() const;

    /// Gives back the memory that reading took; what is read later is mapped again.
    void releasePages() const;

  private:
    ZPFileHandle(int descriptor, std::span<const std::byte> bytes)
        : _descriptor(descriptor), _bytes(bytes) {}

    int _descriptor;
    std::span<const std::byte> _bytes;
};
