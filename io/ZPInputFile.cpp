#include "io/ZPInputFile.h"

#include "io/ZPOutputGate.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int openWithoutWaiting(const std::filesystem::path &path) {
    return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

} // namespace

ZPInputFile::ZPInputFile(const std::filesystem::path &path)
    : _descriptor(openWithoutWaiting(path)), _openFailure(_descriptor < 0 ? errno : 0) {
    ZPNoteInput(path);
    // From a pipe with a writer the bytes are waited for.
    if (_descriptor >= 0)
        fcntl(_descriptor, F_SETFL, 0);
}

ZPInputFile::~ZPInputFile() {
    if (_isOwned && _descriptor >= 0)
        close(_descriptor);
}

std::optional<std::size_t> ZPInputFile::read(std::span<char> bytes, ZPError *error) {
    int failure = _openFailure;
    while (failure == 0) {
        const ssize_t count = ::read(_descriptor, bytes.data(), bytes.size());
        if (count >= 0)
            return static_cast<std::size_t>(count);
        failure = errno == EINTR ? 0 : errno;
    }
    ZPFail(error, ZPError::posix(failure));
    return std::nullopt;
}

std::optional<std::span<const std::byte>> ZPReadBeginning(const std::filesystem::path &path,
                                                          std::span<std::byte> room) {
    const int descriptor = openWithoutWaiting(path);
    if (descriptor < 0)
        return std::nullopt;
    struct stat status {};
    const bool isFile = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    const ssize_t count = isFile ? pread(descriptor, room.data(), room.size(), 0) : -1;
    close(descriptor);
    if (count < 0)
        return std::nullopt;
    return room.first(static_cast<std::size_t>(count));
}
