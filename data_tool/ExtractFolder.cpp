#include "data_tool/ExtractFolder.h"

#include "archive/ZPGorvaneArchiveGuard.h"
#include "data_tool/Failure.h"
#include "io/ZPAtomicFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

/// Closes what it holds.
class Descriptor {
  public:
    explicit Descriptor(int number) : _number(number) {}
    ~Descriptor() {
        if (_number >= 0)
            close(_number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    operator int() const { return _number; }

  private:
    int _number;
};

int openFolder(int parent, const std::string &name) {
    return openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// Whether it is there afterwards, as a folder or as something else.
bool makeFolder(int parent, const std::string &name) {
    return mkdirat(parent, name.c_str(), 0777) == 0 || errno == EEXIST;
}

[[noreturn]] void refuse(const std::filesystem::path &path, int number) {
    throw CommandFailure(path.string() + ": " + ZPError::posix(number).failureReason());
}

/// Somebody's game is not to be mixed up with thousands of files.
void refuseArchivesIn(const std::filesystem::path &path) {
    std::error_code fault;
    for (std::filesystem::directory_iterator entry(path, fault), end; !fault && entry != end;
         entry.increment(fault))
        if (ZPGorvaneIsArchive(entry->path()))
            throw CommandFailure(path.string() + ": holds an archive, " +
                                 entry->path().filename().string() +
                                 ", and nothing is extracted into it");
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

// -- folders

ExtractFolder::~ExtractFolder() {
    if (_root >= 0)
        close(_root);
}

void ExtractFolder::openRoot() {
    std::error_code fault;
    std::filesystem::create_directories(_path, fault);
    _root = ::open(_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (_root < 0)
        refuse(_path, errno);
    refuseArchivesIn(_path);
}

void ExtractFolder::makeArchiveFolder(const std::string &name) {
    if (!_archives.insert(name).second)
        return;
    if (!makeFolder(_root, name))
        refuse(_path / name, errno);
    refuseArchivesIn(_path / name);
}

void ExtractFolder::make(const Names &names) {
    if (!names.archive.empty())
        makeArchiveFolder(names.archive);
    const Descriptor parent(names.archive.empty() ? dup(_root) : openFolder(_root, names.archive));
    if (parent < 0)
        refuse(_path / names.archive, errno);
    const bool isMade = makeFolder(parent, names.className);
    const Descriptor own(isMade ? openFolder(parent, names.className) : -1);
    if (own < 0)
        refuse(_path / names.archive / names.className, errno);
}

std::size_t ExtractFolder::folder(const std::string &archive, const std::string &className) {
    if (_root < 0)
        openRoot();
    const auto [found, isNew] = _numbers.try_emplace({archive, className}, _folders.size());
    if (isNew) {
        make(found->first);
        _folders.push_back(found->first);
    }
    return found->second;
}

int ExtractFolder::open(std::size_t folder) const {
    const Names &names = _folders[folder];
    if (names.archive.empty())
        return openFolder(_root, names.className);
    const Descriptor parent(openFolder(_root, names.archive));
    return parent < 0 ? -1 : openFolder(parent, names.className);
}

OpenFolders::~OpenFolders() {
    for (const Open &open : _open)
        if (open.descriptor >= 0)
            close(open.descriptor);
}

int OpenFolders::descriptorOf(std::size_t folder) {
    for (const Open &open : _open)
        if (open.descriptor >= 0 && open.folder == folder)
            return open.descriptor;
    Open &oldest = _open[_next++ % _open.size()];
    if (oldest.descriptor >= 0)
        close(oldest.descriptor);
    oldest = {folder, _folder.open(folder)};
    return oldest.descriptor;
}

// -- a file

/// In nanoseconds, whole tenths of a microsecond, which is as fine as some file systems are.
long ExtractedFile::fractionFor(std::uint64_t size) const {
    if (_maker == 0)
        return 0;
    constexpr std::uint64_t kTenths = 10'000'000, kMix = 0x9E3779B97F4A7C15;
    const std::uint64_t mixed = (_maker ^ (size * kMix)) * kMix;
    return static_cast<long>((mixed >> 32) % (kTenths - 1) + 1) * 100;
}

bool ExtractedFile::isThere(const struct stat &file) const {
    return _date != 0 && S_ISREG(file.st_mode) && file.st_mtim.tv_sec == time_t{_date} &&
           (_maker == 0 ||
            file.st_mtim.tv_nsec == fractionFor(static_cast<std::uint64_t>(file.st_size)));
}

bool ExtractedFile::isThere() const {
    struct stat file {};
    return fstatat(_folder, _name.c_str(), &file, AT_SYMLINK_NOFOLLOW) == 0 && isThere(file);
}

int ExtractedFile::create() const {
    return openat(_folder, _name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                  0666);
}

/// Closes the descriptor, of a file that was just made; removes it, with the cause in `errno`, when
/// it cannot be written.
bool ExtractedFile::fill(int descriptor, std::span<const std::byte> bytes) const {
    const timespec times[] = {{0, UTIME_OMIT}, {time_t{_date}, fractionFor(bytes.size())}};
    const bool isWritten =
        writeAll(descriptor, bytes) && (_date == 0 || futimens(descriptor, times) == 0);
    int fault = errno;
    const bool isClosed = close(descriptor) == 0;
    if (isWritten && isClosed)
        return true;
    fault = isWritten ? errno : fault;
    unlinkat(_folder, _name.c_str(), 0);
    errno = fault;
    return false;
}

/// Of a file: a new one takes its place when it is whole. What else has the old one by another name
/// keeps it.
bool ExtractedFile::replace(std::span<const std::byte> bytes, ZPError *error) const {
    ZPAtomicFile file("/proc/self/fd/" + std::to_string(_folder) + "/" + _name);
    return file.open(error) && file.write(bytes, error) &&
           (_date == 0 ||
            file.setModificationTime({time_t{_date}, fractionFor(bytes.size())}, error)) &&
           file.commit(error);
}

ExtractedFile::Outcome ExtractedFile::write(std::span<const std::byte> bytes, bool again,
                                            ZPError *error) const {
    int descriptor = create();
    struct stat old {};
    if (descriptor < 0 && errno == EEXIST &&
        fstatat(_folder, _name.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0) {
        if (!again && isThere(old) && static_cast<std::uint64_t>(old.st_size) == bytes.size())
            return Outcome::wasThere;
        if (S_ISREG(old.st_mode))
            return replace(bytes, error) ? Outcome::written : Outcome::failed;
        if (unlinkat(_folder, _name.c_str(), 0) == 0) // a link, say
            descriptor = create();
    }
    if (descriptor >= 0 && fill(descriptor, bytes))
        return Outcome::written;
    ZPFail(error, ZPError::posix(errno));
    return Outcome::failed;
}
