#include "archive/ZPFileHandle.h"

#include "archive/ZPReadAhead.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

std::unique_ptr<ZPFileHandle> ZPFileHandle::fileHandleAtPath(const std::filesystem::path &path,
                                                             ZPError *error) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const auto failWith = [&](int number) {
        if (descriptor >= 0)
            close(descriptor);
        ZPFail(error, ZPError::posix(number));
        return nullptr;
    };
    if (descriptor < 0 || flock(descriptor, LOCK_SH | LOCK_NB) != 0)
        return failWith(errno);

    struct stat status {};
    if (fstat(descriptor, &status) != 0)
        return failWith(errno);
    if (!S_ISREG(status.st_mode))
        return failWith(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);

    std::span<const std::byte> bytes;
    if (const auto size = static_cast<std::size_t>(status.st_size); size > 0) {
        void *address = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
        if (address == MAP_FAILED)
            return failWith(errno);
        bytes = {static_cast<const std::byte *>(address), size};
    }
    return std::unique_ptr<ZPFileHandle>(new ZPFileHandle(descriptor, bytes));
}

ZPFileHandle::~ZPFileHandle() {
    if (!_bytes.empty())
        munmap(const_cast<std::byte *>(_bytes.data()), _bytes.size());
    close(_descriptor);
}

void ZPFileHandle::readAhead() const {
    ZPReadAhead(_descriptor, _bytes.size());
}

void ZPFileHandle::releasePages() const {
    if (!_bytes.empty())
        madvise(const_cast<std::byte *>(_bytes.data()), _bytes.size(), MADV_DONTNEED);
}
