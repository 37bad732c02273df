#pragma once

#include "io/ZPData.h"
#include "io/ZPError.h"

#include <array>
#include <filesystem>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

struct stat;

/// The folder that files are extracted to, with folders of its own for archives and classes. No
/// link below it, symbolic or hard, is written through, so that nothing changes elsewhere, and it
/// is none that holds archives itself.
class ExtractFolder {
  public:
    explicit ExtractFolder(std::filesystem::path path) : _path(std::move(path)) {}
    ~ExtractFolder();
    ExtractFolder(const ExtractFolder &) = delete;
    ExtractFolder &operator=(const ExtractFolder &) = delete;

    /// The number of a folder below, made if need be with those above it; an empty name is left
    /// out. Throws CommandFailure when it cannot be made, is no folder or holds archives.
    [[nodiscard]] std::size_t folder(const std::string &archive, const std::string &className);

    /// A descriptor of the folder with this number, for the caller to close; -1, with the cause in
    /// `errno`, when it cannot be opened. Safe from several threads.
    [[nodiscard]] int open(std::size_t folder) const;

  private:
    struct Names {
        std::string archive, className;
        auto operator<=>(const Names &) const = default;
    };

    void openRoot();
    void makeArchiveFolder(const std::string &name);
    void make(const Names &names);

    std::filesystem::path _path;
    int _root = -1;
    std::set<std::string> _archives;
    std::vector<Names> _folders;
    std::map<Names, std::size_t> _numbers;
};

/// The few folders that a thread wrote to last, open: there may be more of them in all than a
/// process may have files open.
class OpenFolders {
  public:
    /// Borrows the folder.
    explicit OpenFolders(const ExtractFolder &folder) : _folder(folder) {}
    ~OpenFolders();
    OpenFolders(const OpenFolders &) = delete;
    OpenFolders &operator=(const OpenFolders &) = delete;

    /// Valid until the next call; see ExtractFolder::open.
    [[nodiscard]] int descriptorOf(std::size_t folder);

  private:
    struct Open {
        std::size_t folder = 0;
        int descriptor = -1;
    };

    const ExtractFolder &_folder;
    std::array<Open, 4> _open;
    std::size_t _next = 0;
};

/// One file in a folder that is given by its descriptor.
///
/// A file gets its date last. One with the right date and size is whole therefore, whatever ended
/// the run that wrote it, and needs not be written again. The size of a decoded record is known
/// only when it is decoded, and it changes with its decoder; so the date's fraction of a second
/// tells what made the file, and how long it was.
class ExtractedFile {
  public:
    enum class Outcome { written, wasThere, failed };

    /// `date` in seconds since 1970; 0 for none: such a file keeps today's and is never taken for
    /// whole.
    ExtractedFile(int folder, std::string name, std::uint32_t date)
        : _folder(folder), _name(std::move(name)), _date(date) {}

    /// Sets what makes the file, a digest; for bytes as they are stored nothing need be set.
    void setMaker(std::uint64_t maker) { _maker = maker; }

    /// Whether it is there, whole, of whatever size, and made by its maker.
    [[nodiscard]] bool isThere() const;
    /// Leaves a file alone that is there whole and as long as `bytes`, unless it is to be written
    /// `again`; anything else of that name but a folder is replaced.
    [[nodiscard]] Outcome write(std::span<const std::byte> bytes, bool again,
                                ZPError *error = nullptr) const;

  private:
    [[nodiscard]] bool isThere(const struct stat &file) const;
    long fractionFor(std::uint64_t size) const;
    [[nodiscard]] int create() const;
    [[nodiscard]] bool fill(int descriptor, std::span<const std::byte> bytes) const;
    [[nodiscard]] bool replace(std::span<const std::byte> bytes, ZPError *error) const;

    int _folder;
    std::string _name;
    std::uint32_t _date;
    std::uint64_t _maker = 0;
};
