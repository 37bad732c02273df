#pragma once

#include "archive/ZPGorvaneArchiveFamily.h"
#include "archive/ZPGorvaneDirectory.h"
#include "archive/ZPGorvaneFileEntryMap.h"
#include "archive/ZPGorvaneFindingCollector.h"
#include "archive/ZPGorvaneLostIdentifiers.h"
#include "archive/ZPGorvaneVersion.h"

#include <atomic>
#include <mutex>
#include <span>

/// One opened archive: its block storage, an index of all its files that is built on first demand,
/// and its data version.
///
/// Look-ups and reads are safe from several threads; the first that needs the index builds it while
/// the others wait, and it does not change afterwards. The lock of the index comes before any
/// other: under it only the log's, the chain memory's and that of the findings are taken.
///
/// What is wrong with the archive is collected, whoever meets it, and logged when it is met first.
///
/// A file that cannot be read may have any size up to 4 GB written in its entry. Reading holds that
/// against the archive before it takes memory; who knows how long a record can be at most had
/// better hold `fileSize` against that first.
class ZPGorvaneDataFile {
  public:
    ZPGorvaneDataFile() = delete;
    /// An archive that cannot be opened is logged; it has no storage, and every read of it fails.
    ZPGorvaneDataFile(const ZPGorvaneArchiveFamily &family, const std::filesystem::path &path);
    ZPGorvaneDataFile(const ZPGorvaneArchiveFamily &family,
                      std::unique_ptr<ZPGorvaneBlockStorage> blockStorage);
    virtual ~ZPGorvaneDataFile() = default;
    ZPGorvaneDataFile(const ZPGorvaneDataFile &) = delete;
    ZPGorvaneDataFile &operator=(const ZPGorvaneDataFile &) = delete;

    /// Finds and decodes the version record without building the index.
    void quickLoadDataVersion();
    void loadFileEntriesIfNecessary();

    /// Loads the index if necessary. Null when there is no such file; valid while this lives.
    [[nodiscard]] const ZPGorvaneFileEntry *fileEntryWithIdentifier(std::uint32_t identifier);

    // None, with the storage's error, or EBADF of the POSIX domain where there is no storage.
    [[nodiscard]] std::optional<ZPData> readDataForFileEntry(const ZPGorvaneFileEntry &entry,
                                                             ZPError *error = nullptr) const;
    /// Without a copy where that can be; see ZPGorvaneBlockStorage::readBytesFromBlocksAtOffset.
    [[nodiscard]] std::optional<std::span<const std::byte>>
    readBytesForFileEntry(const ZPGorvaneFileEntry &entry, ZPData &scratch,
                          ZPError *error = nullptr) const;

    /// False of a file that is not read since all together claim too much, and it is among the
    /// greatest.
    bool mayRead(const ZPGorvaneFileEntry &entry) const { return entry.fileSize < _excessiveSize; }

    /// Gives back the memory that reading took, for a caller that has read all it wants, and says
    /// where the file was found to have become shorter meanwhile.
    void didReadAllFiles() const;

    /// See ZPGorvaneBlockStorage::prefetchBlocksAtOffset.
    [[gnu::always_inline]] inline void prefetchFileEntry(const ZPGorvaneFileEntry &entry) const {
        if (_blockStorage != nullptr)
            _blockStorage->prefetchBlocksAtOffset(entry.fileOffset, entry.fileSize);
    }

    /// What was found to be wrong so far, of the archive and of records in it.
    const ZPGorvaneFindingCollector &findings() const { return _findings; }
    /// Adds what somebody else found, of this archive; see ZPGorvaneFindingCollector::add.
    bool collect(ZPGorvaneFinding finding) const;
    /// The same for a file of the archive.
    bool collect(const char *kind, const ZPGorvaneFileEntry &entry, std::string cause) const {
        return collect({ZPGorvaneFinding::Severity::error, kind, entry.identifier, entry.fileOffset,
                        std::move(cause)});
    }
    /// Whether the directory, as far as it could be read, leaves open if there is such a file. The
    /// index must be loaded.
    bool mayHaveLost(std::uint32_t identifier) const {
        return !_lostIdentifiers.empty() && _lostIdentifiers.contains(identifier);
    }

    /// Logs what the storage's check of the free blocks finds; always true.
    bool check() const;

    const ZPGorvaneArchiveFamily &family() const { return _family; }
    const std::filesystem::path &path() const { return _path; }
    /// Its file's name for the end of a line, such as " (x.dat)"; empty without a path.
    std::string nameInParentheses() const;
    /// Why the archive could not be opened, in words; empty when it could.
    const std::string &openingFault() const { return _openingFault; }
    /// Null when the archive could not be opened.
    const ZPGorvaneBlockStorage *blockStorage() const { return _blockStorage.get(); }
    ZPGorvaneClientData *clientData() const { return _clientData; }
    void setClientData(ZPGorvaneClientData *clientData) { _clientData = clientData; }
    /// Null until loaded.
    const ZPGorvaneVersion *dataVersion() const { return _dataVersion.get(); }

    // The index: empty until it is loaded.
    bool hasLoadedFileEntries() const { return _hasLoadedFileEntries; }
    std::size_t fileCount() const { return _fileEntriesByIdentifier.size(); }
    const ZPGorvaneDirectory *rootDirectory() const { return _rootDirectory.get(); }
    const ZPGorvaneFileEntryMap &fileEntriesByIdentifier() const {
        return _fileEntriesByIdentifier;
    }
    /// The entries of one type (identifier bits 24 to 31), by identifier.
    std::span<const ZPGorvaneFileEntry> fileEntriesByType(std::uint8_t type) const {
        return entriesInOrder().entriesWithPrefix(type, 24);
    }
    /// Ascending.
    const std::vector<std::uint8_t> &usedFileTypes() const { return _usedFileTypes; }
    /// Every entry by identifier; of several with the same one, all, the last found being the one
    /// that `fileEntriesByIdentifier` knows.
    const ZPGorvaneFileEntryMap &entriesInOrder() const {
        return _repeatedEntries.empty() ? _fileEntriesByIdentifier : _repeatedEntries;
    }

    virtual const char *className() const { return "ZPGorvaneDataFile"; }
    std::string description() const;

  protected:
    /// Called once, when the index is built.
    virtual void didLoadFileEntries() {}

  private:
    void buildIndex();
    void indexEntries();
    void findExcessiveSize(const ZPLargeArray<ZPGorvaneFileEntry> &entries);
    ZPError excess(const ZPGorvaneFileEntry &entry) const;
    void collectUnreadable(const ZPGorvaneFileEntry &entry, const ZPError &error) const;
    void say(const char *kind, std::uint64_t offset, const std::string &cause,
             const std::string &line) const;
    void reportLoss() const;

    const ZPGorvaneArchiveFamily &_family;
    std::filesystem::path _path;
    std::string _openingFault;
    std::unique_ptr<ZPGorvaneBlockStorage> _blockStorage;
    ZPGorvaneClientData *_clientData = nullptr;
    std::unique_ptr<ZPGorvaneDirectory> _rootDirectory;
    std::unique_ptr<ZPGorvaneVersion> _dataVersion;
    ZPGorvaneFileEntryMap _fileEntriesByIdentifier;
    /// Only where an identifier occurs twice.
    ZPGorvaneFileEntryMap _repeatedEntries;
    std::vector<std::uint8_t> _usedFileTypes;
    std::recursive_mutex _fileEntryLock;
    std::atomic<bool> _hasLoadedFileEntries = false;
    ZPGorvaneLostIdentifiers _lostIdentifiers;
    /// Files of so many bytes and more are not read: all together they claim too much.
    std::uint64_t _excessiveSize = UINT64_MAX;
    mutable ZPGorvaneFindingCollector _findings;
};
