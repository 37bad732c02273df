#include "io/ZPAtomicFile.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

// A signal handler may only touch lock-free atomics, so the path that it removes is a plain pointer
// to text that outlives it.
std::atomic<const char *> temporaryPathToRemove = nullptr;

extern "C" void removeTemporaryFileAndDie(int signal) {
    if (const char *path = temporaryPathToRemove.load())
        unlink(path);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

void catchSignalsOnce() {
    static const bool installed = [] {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction current {};
            sigaction(signal, nullptr, &current);
            // A signal that the caller chose to ignore stays ignored.
            if (current.sa_handler == SIG_DFL)
                std::signal(signal, removeTemporaryFileAndDie);
        }
        return true;
    }();
    (void)installed;
}

mode_t fileModeUnderMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

ZPAtomicFile::ZPAtomicFile(std::filesystem::path path) : _path(std::move(path)) {}

ZPAtomicFile::~ZPAtomicFile() {
    discard();
}

bool ZPAtomicFile::failWithErrno(ZPError *error) {
    const ZPError cause = ZPError::posix(errno);
    discard();
    return ZPFail(error, cause);
}

void ZPAtomicFile::discard() {
    if (_descriptor >= 0)
        close(_descriptor);
    _descriptor = -1;
    if (!_temporaryPath.empty())
        unlink(_temporaryPath.c_str());
    temporaryPathToRemove = nullptr;
    _temporaryPath.clear();
}

bool ZPAtomicFile::open(ZPError *error) {
    // A device or a pipe is written to and must not be replaced by a file. Opening a directory
    // fails, which says so before any work is done.
    struct stat target {};
    if (stat(_path.c_str(), &target) == 0 && !S_ISREG(target.st_mode)) {
        _descriptor = ::open(_path.c_str(), O_WRONLY | O_CLOEXEC);
        return _descriptor >= 0 || failWithErrno(error);
    }
    catchSignalsOnce();
    std::string path = _path.string() + ".XXXXXX";
    _descriptor = mkostemp(path.data(), O_CLOEXEC);
    if (_descriptor < 0)
        return failWithErrno(error);
    _temporaryPath = std::move(path);
    temporaryPathToRemove = _temporaryPath.c_str();
    return fchmod(_descriptor, fileModeUnderMask()) == 0 || failWithErrno(error);
}

bool ZPAtomicFile::write(std::span<const std::byte> bytes, ZPError *error) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(_descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failWithErrno(error);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool ZPAtomicFile::rewriteAtOffset(std::uint64_t offset, std::span<const std::byte> bytes,
                                   ZPError *error) {
    while (!bytes.empty()) {
        const ssize_t count =
            pwrite(_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failWithErrno(error);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        offset += static_cast<std::uint64_t>(count);
    }
    return true;
}

bool ZPAtomicFile::commit(ZPError *error) {
    if (close(std::exchange(_descriptor, -1)) != 0)
        return failWithErrno(error);
    if (_temporaryPath.empty())
        return true;
    if (rename(_temporaryPath.c_str(), _path.c_str()) != 0)
        return failWithErrno(error);
    temporaryPathToRemove = nullptr;
    _temporaryPath.clear();
    return true;
}

bool ZPWriteTextToPath(std::string_view text, const std::filesystem::path &path, ZPError *error) {
    ZPAtomicFile file(path);
    return file.open(error) &&
           file.write(std::as_bytes(std::span(text.data(), text.size())), error) &&
           file.commit(error);
}
