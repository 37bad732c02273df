#pragma once

#include <atomic>
#include <filesystem>
#include <string>

/// A name beside `path` for a file that is to be removed again: by the destructor, or when a signal
/// that can be caught ends the process before. Any number may be there at a time, in any number of
/// threads; signals remove the first 64.
class ZPTemporaryName {
  public:
    /// A name of 21 bytes that nobody else uses, whatever length the name of `path` has.
    explicit ZPTemporaryName(const std::filesystem::path &path);
    ~ZPTemporaryName();
    ZPTemporaryName(const ZPTemporaryName &) = delete;
    ZPTemporaryName &operator=(const ZPTemporaryName &) = delete;

    const char *c_str() const { return _path.c_str(); }
    /// The file has got another name, so that nothing is left to remove.
    void release();

  private:
    std::string _path;
    std::atomic<const char *> *_slot = nullptr;
};

/// Removes every file that has such a name at the moment, for a process that ends without its
/// destructors. Safe in a signal handler.
void ZPRemoveTemporaries() noexcept;
