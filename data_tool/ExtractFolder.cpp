#include "data_tool/ExtractFolder.h"

#include "data_tool/Failure.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int createFile(int folder, const char *name) {
    return openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
}

bool writeAll(int descriptor, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        bytes = bytes.subspan(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

bool setDate(int descriptor, std::uint32_t mtime) {
    const timespec dates[] = {{0, UTIME_OMIT}, {static_cast<time_t>(mtime), 0}};
    return mtime == 0 || futimens(descriptor, dates) == 0;
}

} // namespace

ExtractFolder::~ExtractFolder() {
    for (const auto &[name, descriptor] : _folders)
        close(descriptor);
}

int ExtractFolder::openFolder(int parent, const std::string &name) {
    if (mkdirat(parent, name.c_str(), 0777) == 0 || errno == EEXIST) {
        const int descriptor =
            openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (descriptor >= 0)
            return descriptor;
    }
    throw CommandFailure((_path / name).string() + ": " + ZPError::posix(errno).failureReason());
}

int ExtractFolder::folder(const std::string &archive, const std::string &className) {
    if (_folders.empty()) {
        std::error_code fault;
        std::filesystem::create_directories(_path, fault);
        const int root = ::open(_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (root < 0)
            throw CommandFailure(_path.string() + ": " + ZPError::posix(errno).failureReason());
        _folders.emplace("", root);
    }
    int parent = _folders.at("");
    std::string path;
    for (const std::string &name : {archive, className}) {
        if (name.empty())
            continue;
        path += "/" + name;
        const auto found = _folders.find(path);
        parent = found != _folders.end()
                     ? found->second
                     : _folders.emplace(path, openFolder(parent, name)).first->second;
    }
    return parent;
}

bool ExtractFolder::hasFile(int folder, const std::string &name, std::uint32_t mtime,
                            std::optional<std::uint64_t> size) {
    struct stat file {};
    return mtime != 0 && fstatat(folder, name.c_str(), &file, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(file.st_mode) && file.st_mtime == static_cast<time_t>(mtime) &&
           (!size || static_cast<std::uint64_t>(file.st_size) == *size);
}

ExtractFolder::Outcome ExtractFolder::writeFile(int folder, const std::string &name,
                                                std::span<const std::byte> bytes,
                                                std::uint32_t mtime, bool again, ZPError *error) {
    int descriptor = createFile(folder, name.c_str());
    if (descriptor < 0 && errno == EEXIST) {
        if (!again && hasFile(folder, name, mtime, bytes.size()))
            return Outcome::wasThere;
        // A new file instead of new contents: the old one may have a second name elsewhere.
        if (unlinkat(folder, name.c_str(), 0) == 0)
            descriptor = createFile(folder, name.c_str());
    }
    const bool isOpen = descriptor >= 0;
    bool isWritten = isOpen && writeAll(descriptor, bytes) && setDate(descriptor, mtime);
    int fault = errno;
    if (isOpen && close(descriptor) != 0 && isWritten) {
        isWritten = false;
        fault = errno;
    }
    if (isWritten)
        return Outcome::written;
    if (isOpen)
        unlinkat(folder, name.c_str(), 0);
    if (error != nullptr)
        *error = ZPError::posix(fault);
    return Outcome::failed;
}
