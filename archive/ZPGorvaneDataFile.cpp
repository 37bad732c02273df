#include "archive/ZPGorvaneDataFile.h"

#include "io/ZPParallel.h"
#include "io/ZPSystemLog.h"
#include "io/ZPTimer.h"

#include <cerrno>
#include <numeric>
#include <tuple>

namespace {

/// Files of a sound archive share no blocks and together are shorter than it. Those of a damaged
/// one may share some, but not so often that reading them all takes forever.
constexpr std::uint64_t kMostReadings = 16;

using Entries = ZPLargeArray<ZPGorvaneFileEntry>;

Entries copyOf(const std::vector<ZPGorvaneFileEntry> &source) {
    Entries entries = Entries::allocate(source.size());
    std::ranges::copy(source, entries.begin());
    return entries;
}

bool isLockedByAnother(const ZPError &error) {
    return error.domain == kZPPOSIXErrorDomain && error.code == EAGAIN;
}

/// An empty error stands for a header that was refused.
std::string openingFaultOf(const ZPError &error) {
    if (error.domain.empty())
        return "it is no archive of this kind";
    if (isLockedByAnother(error))
        return "another program holds it";
    return error.failureReason();
}

bool isAscending(const Entries &entries) {
    return std::ranges::adjacent_find(entries, std::ranges::greater_equal{},
                                      &ZPGorvaneFileEntry::identifier) == entries.end();
}

} // namespace

ZPGorvaneDataFile::ZPGorvaneDataFile(const ZPGorvaneArchiveFamily &family,
                                     const std::filesystem::path &path)
    : _family(family), _path(path) {
    ZPError error;
    _blockStorage = family.blockStorageAtPath(path, &error);
    if (_blockStorage == nullptr) {
        _openingFault = openingFaultOf(error);
        ZPLog("error: %s %s%s", error.domain.empty() ? "(null)" : error.description().c_str(),
              path.c_str(), isLockedByAnother(error) ? ": another program holds the archive" : "");
    } else if (const std::size_t size = _blockStorage->fileHandle()->openedSize();
               size < _blockStorage->fileSize()) {
        ZPLog("Error: %s holds %zu bytes, but %u by its header: it was cut short", path.c_str(),
              size, _blockStorage->fileSize());
    }
}

ZPGorvaneDataFile::ZPGorvaneDataFile(const ZPGorvaneArchiveFamily &family,
                                     std::unique_ptr<ZPGorvaneBlockStorage> blockStorage)
    : _family(family), _blockStorage(std::move(blockStorage)) {}

void ZPGorvaneDataFile::quickLoadDataVersion() {
    if (_blockStorage == nullptr)
        return;
    try {
        const auto entry = ZPGorvaneDirectory::searchForFileWithIdentifier(
            ZPGorvaneVersion::kIdentifier, *this, _blockStorage->rootOffset(), &_unreadableNode);
        if (!entry)
            return;
        ZPError error;
        const auto data = readDataForFileEntry(*entry, &error);
        if (!data) {
            ZPLog("Error loading data version: %s", error.description().c_str());
            return;
        }
        _dataVersion = _family.newVersion(*data, _clientData);
    } catch (const ZPRangeException &exception) {
        ZPLog("Bummer, caught exception trying to quick load the data version: %s",
              exception.what());
    }
}

void ZPGorvaneDataFile::loadFileEntriesIfNecessary() {
    const std::lock_guard guard(_fileEntryLock);
    if (_hasLoadedFileEntries)
        return;
    ZPLog("[%p] Loading file entries - %s", static_cast<const void *>(this), description().c_str());
    ZPTimer timer;
    timer.start();
    if (const ZPFileHandle *file = _blockStorage != nullptr ? _blockStorage->fileHandle() : nullptr)
        file->readAhead();
    // Isolated, lest a thread that waits for its helpers takes up other work of a caller that is
    // itself parallel. That work may ask for this very index, which the recursive lock would let
    // it build a second time, or for one whose builder waits for this one.
    ZPWithoutOtherWork([this] { buildIndex(); });
    didLoadFileEntries();
    _hasLoadedFileEntries = true;
    timer.stop();
    ZPLog("elapsed time: %s", timer.description().c_str());
    reportLoss();
}

void ZPGorvaneDataFile::buildIndex() {
    // What there is of an index that found no memory is not to be seen: it would tell of files that
    // are not there.
    try {
        _rootDirectory = ZPGorvaneDirectory::treeOfDataFile(*this);
        if (_rootDirectory != nullptr)
            indexEntries();
    } catch (...) {
        _rootDirectory = nullptr;
        _fileEntriesByIdentifier = {};
        _repeatedEntries = {};
        _usedFileTypes.clear();
        throw;
    }
}

void ZPGorvaneDataFile::indexEntries() {
    Entries entries = Entries::allocate(_rootDirectory->entryCount());
    _rootDirectory->copyEntriesFromLeftToRight({entries.data(), entries.size()});

    // A sound tree gives its entries in order. Those of a damaged one are sorted, entries of the
    // same identifier staying in the order in which the nodes are visited, so that the last one
    // counts.
    const bool isSound = isAscending(entries);
    if (!isSound) {
        auto entry = entries.begin();
        _rootDirectory->enumerateDirectoriesUsingBlock([&](const ZPGorvaneDirectory &directory) {
            entry = std::ranges::copy(directory.files(), entry).out;
        });
        std::ranges::stable_sort(entries, {}, &ZPGorvaneFileEntry::identifier);
    }
    dropExcessiveEntries(entries);
    if (!isSound && !isAscending(entries)) {
        std::vector<ZPGorvaneFileEntry> lastOnes;
        for (const ZPGorvaneFileEntry &entry : entries) {
            if (!lastOnes.empty() && lastOnes.back().identifier == entry.identifier)
                lastOnes.pop_back();
            lastOnes.push_back(entry);
        }
        _repeatedEntries = ZPGorvaneFileEntryMap(std::exchange(entries, copyOf(lastOnes)));
    }
    _fileEntriesByIdentifier = ZPGorvaneFileEntryMap(std::move(entries));

    for (unsigned type = 0; type <= 0xFF; ++type)
        if (!fileEntriesByType(static_cast<std::uint8_t>(type)).empty())
            _usedFileTypes.push_back(static_cast<std::uint8_t>(type));
}

/// Leaves out the entries of the greatest sizes where all together claim too much.
void ZPGorvaneDataFile::dropExcessiveEntries(Entries &entries) const {
    const std::uint64_t archiveSize =
        std::uint64_t{_blockStorage->blockCount()} * _blockStorage->blockSize();
    const std::uint64_t limit = kMostReadings * archiveSize;
    // No reading goes through the archive more than once.
    const auto claimOf = [&](const ZPGorvaneFileEntry &entry) {
        return std::min<std::uint64_t>(entry.fileSize, archiveSize);
    };
    const std::uint64_t claimed = std::transform_reduce(entries.begin(), entries.end(),
                                                        std::uint64_t{0}, std::plus(), claimOf);
    if (claimed <= limit)
        return;

    std::vector<ZPGorvaneFileEntry> kept(entries.begin(), entries.end());
    std::vector<ZPGorvaneFileEntry> bySize = kept;
    std::ranges::sort(bySize, {}, &ZPGorvaneFileEntry::fileSize);
    std::uint64_t keptClaims = 0;
    const auto tooMuch = std::ranges::find_if(bySize, [&](const ZPGorvaneFileEntry &entry) {
        keptClaims += claimOf(entry);
        return keptClaims > limit;
    });
    const std::uint32_t leastDropped = tooMuch->fileSize;
    const auto dropped = std::erase_if(
        kept, [=](const ZPGorvaneFileEntry &entry) { return entry.fileSize >= leastDropped; });
    entries = copyOf(kept);
    ZPLog("Error: The files claim more than %u times what the archive holds; the %zu of %u bytes "
          "and more are left out",
          static_cast<unsigned>(kMostReadings), dropped, leastDropped);
}

const ZPGorvaneFileEntry *ZPGorvaneDataFile::fileEntryWithIdentifier(std::uint32_t identifier) {
    if (!_hasLoadedFileEntries)
        loadFileEntriesIfNecessary();
    return _fileEntriesByIdentifier.find(identifier);
}

std::optional<ZPData> ZPGorvaneDataFile::readDataForFileEntry(const ZPGorvaneFileEntry &entry,
                                                              ZPError *error) const {
    if (_blockStorage == nullptr) {
        ZPFail(error, ZPError::posix(EBADF));
        return std::nullopt;
    }
    return _blockStorage->readDataFromBlocksAtOffset(entry.fileOffset, entry.fileSize, error);
}

std::optional<std::span<const std::byte>>
ZPGorvaneDataFile::readBytesForFileEntry(const ZPGorvaneFileEntry &entry, ZPData &scratch,
                                         ZPError *error) const {
    if (_blockStorage == nullptr) {
        ZPFail(error, ZPError::posix(EBADF));
        return std::nullopt;
    }
    return _blockStorage->readBytesFromBlocksAtOffset(entry.fileOffset, entry.fileSize, scratch,
                                                      error);
}

void ZPGorvaneDataFile::didReadAllFiles() const {
    reportLoss();
    if (_blockStorage != nullptr && _blockStorage->fileHandle() != nullptr)
        _blockStorage->fileHandle()->releasePages();
}

/// Says once that the file has become shorter, or unreadable in part, since it was opened.
void ZPGorvaneDataFile::reportLoss() const {
    if (_blockStorage == nullptr || _blockStorage->fileHandle() == nullptr)
        return;
    const ZPFileHandle &file = *_blockStorage->fileHandle();
    const std::size_t lost = file.findLostSize();
    if (lost > 0 && !_hasReportedLoss.exchange(true))
        ZPLog("Error: %s lost %zu of its %zu bytes while it was read", _path.c_str(), lost,
              file.openedSize());
}

bool ZPGorvaneDataFile::check() const {
    ZPLog("%s", "-[ZPGorvaneDataFile check]");
    ZPLog("self: %s", description().c_str());
    if (_blockStorage != nullptr)
        std::ignore = _blockStorage->checkFreeBlockChain(); // what it finds is logged
    return true;
}

std::string ZPGorvaneDataFile::description() const {
    return ZPFormat(
        "<%s: %p> blockSize: %4u, rootOffset: %08x, dataVersion: %u, %s", className(),
        static_cast<const void *>(this), _blockStorage != nullptr ? _blockStorage->blockSize() : 0,
        _blockStorage != nullptr ? _blockStorage->rootOffset() : 0,
        _dataVersion != nullptr ? _dataVersion->version() : 0, _path.filename().c_str());
}
