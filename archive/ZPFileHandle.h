#pragma once

#include "archive/ZPFileMapping.h"
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
    [[nodiscard]] static std::unique_ptr<ZPFileHandle>
    fileHandleAtPath(const std::filesystem::path &path, ZPError *error = nullptr);
    ~ZPFileHandle();
    ZPFileHandle(const ZPFileHandle &) = delete;
    ZPFileHandle &operator=(const ZPFileHandle &) = delete;

    /// The whole file as it was when it was opened, less what it was found to have lost since; what
    /// was given out stays valid while the handle lives, lost bytes being zeros.
    std::span<const std::byte> bytes() const {
        return _mapping != nullptr ? _mapping->bytes() : std::span<const std::byte>();
    }
    /// In bytes, as it was when the file was opened.
    std::size_t openedSize() const { return _mapping != nullptr ? _mapping->mappedSize() : 0; }

    /// Looks whether the file was lost in part since it was opened, and gives the number of bytes.
    [[nodiscard]] std::size_t findLostSize() const;

    /// See ZPReadAhead.
    void readAhead() const;

    /// Gives back the memory that reading took; what is read later is mapped again.
    void releasePages() const;

  private:
    explicit ZPFileHandle(int descriptor) : _descriptor(descriptor) {}

    int _descriptor;
    std::unique_ptr<ZPFileMapping> _mapping; ///< null for an empty file
};
