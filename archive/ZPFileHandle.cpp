#include "archive/ZPFileHandle.h"

#include "archive/ZPReadAhead.h"
#include "io/ZPOutputGate.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

std::unique_ptr<ZPFileHandle> ZPFileHandle::fileHandleAtPath(const std::filesystem::path &path,
                                                             ZPError *error) {
    const auto failWith = [&](int number) {
        ZPFail(error, ZPError::posix(number));
        return nullptr;
    };
    ZPNoteInput(path);
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return failWith(errno);
    std::unique_ptr<ZPFileHandle> handle(new ZPFileHandle(descriptor));
    struct stat status {};
    if (flock(descriptor, LOCK_SH | LOCK_NB) != 0 || fstat(descriptor, &status) != 0)
        return failWith(errno);
    if (S_ISDIR(status.st_mode))
        return failWith(EISDIR);
    if (!S_ISREG(status.st_mode)) {
        ZPError noFile = ZPError::posix(EINVAL);
        noFile.userInfo[NSLocalizedFailureReasonErrorKey] = "no regular file";
        ZPFail(error, std::move(noFile));
        return nullptr;
    }
    if (const auto size = static_cast<std::size_t>(status.st_size); size > 0) {
        handle->_mapping = ZPFileMapping::mapDescriptor(descriptor, size);
        if (handle->_mapping == nullptr)
            return failWith(errno);
    }
    return handle;
}

ZPFileHandle::~ZPFileHandle() {
    _mapping.reset();
    close(_descriptor);
}

std::size_t ZPFileHandle::findLostSize() const {
    if (_mapping == nullptr)
        return 0;
    _mapping->noteCurrentSize();
    return openedSize() - bytes().size() + _mapping->unreadableSize();
}

void ZPFileHandle::readAhead() const {
    ZPReadAhead(_descriptor, bytes().size());
}

void ZPFileHandle::releasePages() const {
    if (_mapping != nullptr)
        _mapping->releasePages();
}
