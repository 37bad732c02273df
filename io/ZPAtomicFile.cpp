#include "io/ZPAtomicFile.h"

#include "io/ZPLinks.h"
#include "io/ZPOutputGate.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr mode_t kModeBeforeMask = 0666;

std::string pathOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// Calls `writeSome` with what is left until nothing is; false, with errno set, when it fails.
template <class WriteSome>
bool writeAll(std::span<const std::byte> bytes, WriteSome writeSome) {
    while (!bytes.empty()) {
        const ssize_t count = writeSome(bytes);
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0)
            errno = EIO; // or it would be tried for ever
        if (count <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

ZPAtomicFile::ZPAtomicFile(std::filesystem::path path, Temporary temporary)
    : _givenPath(std::move(path)), _path(_givenPath), _temporary(temporary) {}

ZPAtomicFile::~ZPAtomicFile() {
    discard();
}

bool ZPAtomicFile::fail(ZPError failure, ZPError *error) {
    discard();
    _failure = std::move(failure);
    return ZPFail(error, *_failure);
}

bool ZPAtomicFile::fail(int number, ZPError *error) {
    return fail(ZPError::posix(number), error);
}

bool ZPAtomicFile::hasFailed(ZPError *error) const {
    if (_failure)
        ZPFail(error, *_failure);
    return _failure.has_value();
}

void ZPAtomicFile::discard() {
    if (_descriptor >= 0)
        close(std::exchange(_descriptor, -1));
    _name.reset();
}

bool ZPAtomicFile::open(ZPError *error) {
    if (ZPError refusal; !ZPMayWrite(_givenPath, &refusal))
        return fail(std::move(refusal), error);
    struct stat target {};
    _replacesFile = stat(_path.c_str(), &target) == 0;
    if (!_replacesFile && errno != ENOENT)
        return fail(errno, error);
    _path = ZPFollowLinks(_givenPath);
    if (_replacesFile && (!S_ISREG(target.st_mode) || ZPIsInProcessFolder(_path))) {
        // Opening a directory fails, which says so before any work is done.
        _descriptor = ::open(_path.c_str(), O_WRONLY | O_CLOEXEC);
        if (_descriptor < 0)
            return fail(errno, error);
        const off_t end = S_ISREG(target.st_mode) ? lseek(_descriptor, 0, SEEK_END) : 0;
        _start = end > 0 ? static_cast<std::uint64_t>(end) : 0;
        return true;
    }
    if (!_path.has_filename())
        return fail(ENOENT, error);
    if (!openNameless() && !openNamed())
        return fail(errno, error);
    return !_replacesFile || takeAttributes(target) || fail(errno, error);
}

bool ZPAtomicFile::openNameless() {
    if (_temporary == Temporary::named)
        return false;
    _descriptor =
        ::open(ZPFolderOfPath(_path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kModeBeforeMask);
    // Without the system's folder of open files it could not be given a name later.
    _isNameless = _descriptor >= 0 && access(pathOfDescriptor(_descriptor).c_str(), F_OK) == 0;
    if (!_isNameless)
        discard();
    return _isNameless;
}

bool ZPAtomicFile::openNamed() {
    do {
        _name = std::make_unique<ZPTemporaryName>(_path);
        _descriptor =
            ::open(_name->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kModeBeforeMask);
    } while (_descriptor < 0 && errno == EEXIST);
    return _descriptor >= 0;
}

bool ZPAtomicFile::takeAttributes(const struct stat &target) {
    struct stat own {};
    if (fstat(_descriptor, &own) != 0)
        return false;
    // Only root may give files away; a file written by somebody else is theirs.
    if (own.st_uid != target.st_uid || own.st_gid != target.st_gid)
        static_cast<void>(fchown(_descriptor, target.st_uid, target.st_gid) == 0);
    constexpr mode_t kPermissions = 0777;
    const mode_t mode = target.st_mode & kPermissions;
    return mode == (own.st_mode & kPermissions) || fchmod(_descriptor, mode) == 0;
}

bool ZPAtomicFile::write(std::span<const std::byte> bytes, ZPError *error) {
    if (hasFailed(error))
        return false;
    const auto writeSome = [this](std::span<const std::byte> rest) {
        return ::write(_descriptor, rest.data(), rest.size());
    };
    return writeAll(bytes, writeSome) || fail(errno, error);
}

bool ZPAtomicFile::rewriteAtOffset(std::uint64_t offset, std::span<const std::byte> bytes,
                                   ZPError *error) {
    if (hasFailed(error))
        return false;
    offset += _start;
    const auto writeSome = [&](std::span<const std::byte> rest) {
        const ssize_t count =
            pwrite(_descriptor, rest.data(), rest.size(), static_cast<off_t>(offset));
        offset += count > 0 ? static_cast<std::uint64_t>(count) : 0;
        return count;
    };
    return writeAll(bytes, writeSome) || fail(errno, error);
}

bool ZPAtomicFile::setModificationTime(const timespec &time, ZPError *error) {
    if (hasFailed(error))
        return false;
    const timespec times[] = {{0, UTIME_OMIT}, time};
    return futimens(_descriptor, times) == 0 || fail(errno, error);
}

bool ZPAtomicFile::commit(ZPError *error) {
    if (hasFailed(error))
        return false;
    // Closing brings up what a file system kept to itself when the bytes were written. A copy is
    // closed, since a file without a name goes with its last descriptor.
    const int copy = fcntl(_descriptor, F_DUPFD_CLOEXEC, 0);
    if (copy < 0 || close(copy) != 0)
        return fail(errno, error);
    // The file may have come meanwhile, and drawing takes its time.
    const bool getsName = _isNameless || _name != nullptr;
    if (ZPError refusal; getsName && !ZPMayWrite(_givenPath, &refusal))
        return fail(std::move(refusal), error);
    if (_isNameless && !takeName())
        return fail(errno, error);
    if (_name != nullptr) {
        if (rename(_name->c_str(), _path.c_str()) != 0)
            return fail(errno, error);
        _name->release();
    }
    discard();
    return true;
}

/// Gives a nameless file its name, or, since a link replaces nothing, a temporary one where the
/// name is taken.
bool ZPAtomicFile::takeName() {
    const std::string source = pathOfDescriptor(_descriptor);
    const auto link = [&source](const char *path) {
        return linkat(AT_FDCWD, source.c_str(), AT_FDCWD, path, AT_SYMLINK_FOLLOW) == 0;
    };
    if (!_replacesFile && link(_path.c_str()))
        return true;
    do {
        _name = std::make_unique<ZPTemporaryName>(_path);
        if (link(_name->c_str()))
            return true;
    } while (errno == EEXIST);
    return false;
}

bool ZPWriteTextToPath(std::string_view text, const std::filesystem::path &path, ZPError *error) {
    ZPAtomicFile file(path);
    return file.open(error) &&
           file.write(std::as_bytes(std::span(text.data(), text.size())), error) &&
           file.commit(error);
}
