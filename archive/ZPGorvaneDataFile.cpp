#include "archive/ZPGorvaneDataFile.h"

#include "archive/ZPGorvaneDirectoryReader.h"
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
        const std::string cause =
            ZPFormat("%s holds %zu bytes, but %u by its header: it was cut short", path.c_str(),
                     size, _blockStorage->fileSize());
        say(kZPGorvaneHeaderFinding, 0, cause, "Error: " + cause);
    }
}

ZPGorvaneDataFile::ZPGorvaneDataFile(const ZPGorvaneArchiveFamily &family,
                                     std::unique_ptr<ZPGorvaneBlockStorage> blockStorage)
    : _family(family), _blockStorage(std::move(blockStorage)) {}

bool ZPGorvaneDataFile::collect(ZPGorvaneFinding finding) const {
    finding.archive = _path.string();
    return _findings.add(std::move(finding));
}

/// Collects what is wrong with the archive as such, and logs it.
void ZPGorvaneDataFile::say(const char *kind, std::uint64_t offset, const std::string &cause,
                            const std::string &line) const {
    collect({ZPGorvaneFinding::Severity::error, kind, std::nullopt, offset, cause});
    ZPLog("%s", line.c_str());
}

void ZPGorvaneDataFile::quickLoadDataVersion() {
    if (_blockStorage == nullptr)
        return;
    std::optional<ZPGorvaneFileEntry> entry;
    try {
        entry = ZPGorvaneDirectory::searchForFileWithIdentifier(ZPGorvaneVersion::kIdentifier,
                                                                *this, _blockStorage->rootOffset());
        if (!entry)
            return;
        ZPError error;
        const auto data = readDataForFileEntry(*entry, &error);
        if (!data) {
            ZPLog("Error loading data version: %s", error.description().c_str());
            return; // the file is among the findings
        }
        _dataVersion = _family.newVersion(*data, _clientData);
    } catch (const std::bad_alloc &) {
        throw; // nothing of the archive's
    } catch (const std::exception &exception) {
        // Before there is an entry, it is a node's, which the index will meet again.
        if (entry)
            collect(kZPGorvaneRecordFinding, *entry, exception.what());
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
        if (_blockStorage == nullptr)
            return;
        ZPGorvaneDirectoryReader::Tree tree =
            ZPGorvaneDirectoryReader::readTree(*this, _blockStorage->rootOffset());
        _rootDirectory = std::move(tree.root.directory);
        _lostIdentifiers = std::move(tree.lost);
        // Of the root, too, what can be read is kept.
        if (tree.root.exception) {
            const std::string line =
                ZPFormat("dir %08x> Caught exception: %s", _rootDirectory->offset(),
                         tree.root.exception->what());
            say(kZPGorvaneDirectoryFinding, _rootDirectory->offset(), line, line);
        }
        if (_rootDirectory != nullptr)
            indexEntries();
    } catch (...) {
        _rootDirectory = nullptr;
        _lostIdentifiers = {};
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
    findExcessiveSize(entries);
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

/// Finds from which size on files are not read, where all together claim too much.
void ZPGorvaneDataFile::findExcessiveSize(const Entries &entries) {
    const std::uint64_t archiveSize =
        std::uint64_t{_blockStorage->blockCount()} * _blockStorage->blockSize();
    const std::uint64_t limit = kMostReadings * archiveSize;
    // No reading goes through the archive more than once.
    const auto claimOf = [&](std::uint32_t size) {
        return std::min<std::uint64_t>(size, archiveSize);
    };
    const std::uint64_t claimed =
        std::transform_reduce(entries.begin(), entries.end(), std::uint64_t{0}, std::plus(),
                              [&](const auto &entry) { return claimOf(entry.fileSize); });
    if (claimed <= limit)
        return;

    std::vector<std::uint32_t> sizes(entries.size());
    std::ranges::transform(entries, sizes.begin(), &ZPGorvaneFileEntry::fileSize);
    std::ranges::sort(sizes);
    std::uint64_t claims = 0;
    _excessiveSize = *std::ranges::find_if(sizes, [&](std::uint32_t size) {
        claims += claimOf(size);
        return claims > limit;
    });
    const auto count =
        std::ranges::count_if(sizes, [this](std::uint32_t size) { return size >= _excessiveSize; });
    const std::string cause =
        ZPFormat("The files claim more than %u times what the archive holds; the %zu of %u bytes "
                 "and more are not read",
                 static_cast<unsigned>(kMostReadings), static_cast<std::size_t>(count),
                 static_cast<unsigned>(_excessiveSize));
    say(kZPGorvaneSizeFinding, 0, cause, "Error: " + cause + nameInParentheses());
}

const ZPGorvaneFileEntry *ZPGorvaneDataFile::fileEntryWithIdentifier(std::uint32_t identifier) {
    if (!_hasLoadedFileEntries)
        loadFileEntriesIfNecessary();
    return _fileEntriesByIdentifier.find(identifier);
}

std::optional<ZPData> ZPGorvaneDataFile::readDataForFileEntry(const ZPGorvaneFileEntry &entry,
                                                              ZPError *error) const {
    ZPData data;
    const auto bytes = readBytesForFileEntry(entry, data, error);
    if (!bytes)
        return std::nullopt;
    if (bytes->data() != data.data())
        data.assign(bytes->begin(), bytes->end());
    return data;
}

std::optional<std::span<const std::byte>>
ZPGorvaneDataFile::readBytesForFileEntry(const ZPGorvaneFileEntry &entry, ZPData &scratch,
                                         ZPError *error) const {
    if (_blockStorage == nullptr) {
        ZPFail(error, ZPError::posix(EBADF));
        return std::nullopt;
    }
    std::span<const std::byte> bytes;
    auto fault = mayRead(entry) ? _blockStorage->findBytesAtOffset(entry.fileOffset, entry.fileSize,
                                                                   scratch, bytes)
                                : std::optional(excess(entry));
    if (!fault)
        return bytes;
    collectUnreadable(entry, *fault);
    ZPFail(error, std::move(*fault));
    return std::nullopt;
}

ZPError ZPGorvaneDataFile::excess(const ZPGorvaneFileEntry &entry) const {
    return {kZPGorvaneStorageErrorDomain,
            ZPGorvaneStorageErrorGeneral,
            {{NSLocalizedFailureReasonErrorKey,
              ZPFormat("the files claim more than the archive can hold, and this one %u bytes",
                       entry.fileSize)}}};
}

/// Want of memory is nothing of the archive's.
void ZPGorvaneDataFile::collectUnreadable(const ZPGorvaneFileEntry &entry,
                                          const ZPError &error) const {
    if (error.domain != kZPGorvaneStorageErrorDomain)
        return;
    const bool isSize =
        error.code == ZPGorvaneStorageErrorTooShort || error.code == ZPGorvaneStorageErrorGeneral;
    if (!collect(isSize ? kZPGorvaneSizeFinding : kZPGorvaneFileChainFinding, entry,
                 error.failureReason()))
        return;
    const std::string line = ZPGorvaneBlockStorage::exceptionLine(error, _path.filename());
    if (!line.empty())
        ZPLog("%s", line.c_str());
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
    if (lost == 0)
        return;
    const std::string cause = ZPFormat("%s lost %zu of its %zu bytes while it was read",
                                       _path.c_str(), lost, file.openedSize());
    if (collect({ZPGorvaneFinding::Severity::error, kZPGorvaneHeaderFinding, std::nullopt,
                 file.openedSize(), cause}))
        ZPLog("Error: %s", cause.c_str());
}

bool ZPGorvaneDataFile::check() const {
    ZPLog("%s", "-[ZPGorvaneDataFile check]");
    ZPLog("self: %s", description().c_str());
    if (_blockStorage != nullptr)
        std::ignore = _blockStorage->checkFreeBlockChain(); // what it finds is logged
    return true;
}

std::string ZPGorvaneDataFile::nameInParentheses() const {
    return _path.empty() ? std::string() : " (" + _path.filename().string() + ")";
}

std::string ZPGorvaneDataFile::description() const {
    return ZPFormat("<%s: %p> blockSize: %4u, rootOffset: %08x, dataVersion: %u, %s", className(),
                    static_cast<const void *>(this),
                    _blockStorage != nullptr ? _blockStorage->blockSize() : 0,
                    _blockStorage != nullptr ? _blockStorage->rootOffset() : 0,
                    _dataVersion != nullptr ? _dataVersion->version() : 0,
                    _path.empty() ? "(null)" : _path.filename().c_str());
}
