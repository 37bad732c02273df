#pragma once

#include "archive/ZPGorvaneArchiveFamily.h"
#include "archive/ZPGorvaneDirectory.h"
#include "archive/ZPGorvaneFileEntryMap.h"
#include "archive/ZPGorvaneVersion.h"

#include <atomic>
#include <mutex>
#include <span>

/// One opened archive: its block storage, an index of all its files that is built on first demand,
/// and its data version.
///
/// Look-ups and reads are safe from several threads; the first that needs the index builds it while
/// the others wait, and it does not change afterwards. The lock of the index comes before any
/// other: under it only the log's and the chain memory's are taken.
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

    /// Gives back the memory that reading took, for a caller that has read all it wants, and says
    /// where the file was found to have become shorter meanwhile.
    void didReadAllFiles() const;

    /// See ZPGorvaneBlockStorage::prefetchBlocksAtOffset.
    [[gnu::always_inline]] inline void prefetchFileEntry(const ZPGorvaneFileEntry &entry) const {
        if (_blockStorage != nullptr)
            _blockStorage->prefetchBlocksAtOffset(entry.fileOffset, entry.fileSize);
    }

    /// Logs what the storage's check of the free blocks finds; always true.
    bool check() const;

    const ZPGorvaneArchiveFamily &family() const { return _family; }
    const std::filesystem::path &path() const { return _path; }
    /// Why the archive could not be opened, in words; empty when it could.
    const std::string &openingFault() const { return _openingFault; }
    /// Null when the archive could not be opened.
    const ZPGorvaneBlockStorage *blockStorage() const { return _blockStorage.get(); }
    ZPGorvaneClientData *clientData() const { return _clientData; }
    void setClientData(ZPGorvaneClientData *clientData) { _clientData = clientData; }
    /// Offset of a node that the search for the version found unreadable, and logged; else 0.
    std::uint32_t unreadableNode() const { return _unreadableNode; }
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

    virtual const char *className() const { return "ZPGorvaneDataFile"; }
    std::string description() const;

  protected:
    /// Called once, when the index is built.
    virtual void didLoadFileEntries() {}
    /// Every entry by identifier; of several with the same one, all, the last found being the one
    /// that `fileEntriesByIdentifier` knows.
    const ZPGorvaneFileEntryMap &entriesInOrder() const {
        return _repeatedEntries.empty() ? _fileEntriesByIdentifier : _repeatedEntries;
    }

  private:
    void buildIndex();
    void indexEntries();
    void dropExcessiveEntries(ZPLargeArray<ZPGorvaneFileEntry> &entries) const;
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
    std::uint32_t _unreadableNode = 0;
    mutable std::atomic<bool> _hasReportedLoss = false;
};
