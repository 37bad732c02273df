#include "data_tool/ExtractFolder.h"

#include "data_tool/Failure.h"
#include "io/ZPError.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string systemWords() {
    return ZPError::posix(errno).failureReason();
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

} // namespace

ExtractFolder::ExtractFolder(const std::filesystem::path &path) : _path(path) {
    std::error_code fault;
    std::filesystem::create_directories(path, fault);
    _root = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (_root < 0)
        throw CommandFailure(path.string() + ": " + systemWords());
}

ExtractFolder::~ExtractFolder() {
    for (const auto &[name, descriptor] : _folders)
        close(descriptor);
    close(_root);
}

int ExtractFolder::openFolder(int parent, const std::string &name) {
    if (mkdirat(parent, name.c_str(), 0777) != 0 && errno != EEXIST)
        throw CommandFailure((_path / name).string() + ": " + systemWords());
    const int descriptor =
        openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        throw CommandFailure((_path / name).string() + ": " + systemWords());
    return descriptor;
}

int ExtractFolder::folder(const std::string &archive, const std::string &className) {
    int parent = _root;
    std::string path;
    for (const std::string &name : {archive, className}) {
        if (name.empty())
            continue;
        path += "/" + name;
        const auto [place, isNew] = _folders.try_emplace(path, -1);
        if (isNew) {
            try {
                place->second = openFolder(parent, name);
            } catch (const CommandFailure &) {
                _folders.erase(place);
                throw;
            }
        }
        parent = place->second;
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

std::string ExtractFolder::writeFile(int folder, const std::string &name,
                                     std::span<const std::byte> bytes, std::uint32_t mtime) {
    const std::string partName = name + ".part";
    const int descriptor = openat(folder, partName.c_str(),
                                  O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return systemWords();
    const timespec date{static_cast<time_t>(mtime), 0};
    const timespec dates[] = {date, date};
    bool isWritten =
        writeAll(descriptor, bytes) && (mtime == 0 || futimens(descriptor, dates) == 0);
    std::string fault = isWritten ? std::string() : systemWords();
    if (close(descriptor) != 0 && isWritten) {
        isWritten = false;
        fault = systemWords();
    }
    if (isWritten && renameat(folder, partName.c_str(), folder, name.c_str()) == 0)
        return {};
    if (isWritten)
        fault = systemWords();
    unlinkat(folder, partName.c_str(), 0);
    return fault;
}
