#include "game/WQDataFileComparison.h"

#include "game/WQKnownDungeons.h"
#include "game/WQMapCoordinate.h"
#include "io/ZPAtomicFile.h"
#include "io/ZPSystemLog.h"

#include <cstdio>
#include <future>
#include <mutex>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

namespace {

/// Progress is reported at multiples of this.
constexpr std::size_t kFilesPerReport = 1000;
/// Some 0.2 ms of work: enough to make handing it out cheap.
constexpr std::size_t kFilesPerTask = 1000;
/// How many files ahead memory is asked for.
constexpr std::size_t kFilesAhead = 8;

/// Reports on work that several threads do, in the order that one would have: a position is due
/// when more files than that are done.
class HashingProgress {
  public:
    explicit HashingProgress(std::size_t count) : _count(count) {}

    void finishFiles(std::size_t number) {
        const std::lock_guard guard(_lock);
        _finished += number;
        for (; _position < _finished; _position += kFilesPerReport)
            ZPLog("hashed %8zu / %8zu = %5.1f %%", _position, _count,
                  static_cast<double>(_position) * 100 / static_cast<double>(_count));
    }

  private:
    const std::size_t _count;
    std::mutex _lock;
    std::size_t _finished = 0;
    std::size_t _position = 0;
};

bool saveText(const std::string &text, const std::filesystem::path *path, ZPError *error) {
    if (path != nullptr)
        return ZPWriteTextToPath(text, *path, error);
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    return true;
}

bool saveDigests(const std::optional<WQFileDigestMap> &digests, const std::filesystem::path &path,
                 ZPError *error) {
    std::string text;
    if (digests)
        for (const WQFileDigest &digest : *digests)
            text += ZPFormat("%08x = %s\n", digest.identifier, digest.text().c_str());
    return saveText(text, &path, error);
}

std::string summaryHead(std::size_t added, std::size_t removed, std::size_t changed) {
    return ZPFormat("added: %zu, removed: %zu, changed: %zu\n", added, removed, changed);
}

void appendTitle(std::string &text, const char *title) {
    text.append(70, '-').append("\n").append(title).append(":\n");
}

} // namespace

// -- comparing

void WQDataFileComparison::buildComparison() {
    std::future<void> release;
    if (_dataFile1 != nullptr) {
        _digests1 = buildSHA1DigestsByIDForDataFile(*_dataFile1);
        // Beside the hashing of the other archive, since unmapping takes a while.
        release = std::async(std::launch::async, [this] { _dataFile1->didReadAllFiles(); });
    }
    if (_dataFile2 != nullptr)
        _digests2 = buildSHA1DigestsByIDForDataFile(*_dataFile2);
    if (!_digests1 || !_digests2)
        return;
    compareDigests();
    if (_dataFile1->type() != WQDataFile::cell)
        return;
    _landBlocksAdded.emplace(*_fileKeysAdded);
    _landBlocksRemoved.emplace(*_fileKeysRemoved);
    _landBlocksChanged.emplace(*_fileKeysChanged);
}

void WQDataFileComparison::compareDigests() {
    FileKeys &added = _fileKeysAdded.emplace();
    FileKeys &removed = _fileKeysRemoved.emplace();
    FileKeys &changed = _fileKeysChanged.emplace();
    auto file1 = _digests1->begin();
    auto file2 = _digests2->begin();
    while (file1 != _digests1->end() || file2 != _digests2->end()) {
        if (file1 == _digests1->end() ||
            (file2 != _digests2->end() && file2->identifier < file1->identifier)) {
            added.push_back((file2++)->identifier);
        } else if (file2 == _digests2->end() || file1->identifier < file2->identifier) {
            removed.push_back((file1++)->identifier);
        } else {
            if (file1->digest != file2->digest)
                changed.push_back(file1->identifier);
            ++file1;
            ++file2;
        }
    }
}

WQFileDigestMap
WQDataFileComparison::buildSHA1DigestsByIDForDataFile(const WQDataFile &dataFile) const {
    static constexpr char kName[] = "-[WQDataFileComparison buildSHA1DigestsByIDForDataFile:]";
    ZPLog("[%p]  > %s", static_cast<const void *>(this), kName);
    const ZPGorvaneFileEntryMap &entries = dataFile.fileEntriesByIdentifier();
    auto digests = ZPLargeArray<WQFileDigest>::allocate(entries.size());
    std::vector<std::uint32_t> unreadable;
    std::mutex unreadableLock;
    HashingProgress progress(entries.size());

    const auto hashFiles = [&](const tbb::blocked_range<std::size_t> &range) {
        ZPData scratch;
        for (std::size_t index = range.begin(); index < range.end(); ++index) {
            if (index + kFilesAhead < entries.size())
                dataFile.prefetchFileEntry(entries[index + kFilesAhead]);
            WQFileDigest &digest = digests.data()[index];
            digest.identifier = entries[index].identifier;
            if (const auto bytes = dataFile.readBytesForFileEntry(entries[index], scratch)) {
                digest.digest = ZPSHA1DigestOfData(*bytes);
            } else {
                const std::lock_guard guard(unreadableLock);
                unreadable.push_back(entries[index].identifier);
            }
        }
        progress.finishFiles(range.size());
    };
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, entries.size(), kFilesPerTask), hashFiles,
                      tbb::simple_partitioner());
    const WQFileDigest *end = digests.end();
    if (!unreadable.empty()) {
        std::ranges::sort(unreadable);
        end = std::remove_if(digests.begin(), digests.end(), [&](const WQFileDigest &digest) {
            return std::ranges::binary_search(unreadable, digest.identifier);
        });
    }
    const auto count = static_cast<std::size_t>(end - digests.begin());

    ZPLog("hashed %8zu / %8zu = 100.0 %%", entries.size(), entries.size());
    ZPLog("[%p] <  %s", static_cast<const void *>(this), kName);
    return {std::move(digests), count};
}

// -- reports

bool WQDataFileComparison::saveFile1DigestsToURL(const std::filesystem::path &path,
                                                 ZPError *error) const {
    return saveDigests(_digests1, path, error);
}

bool WQDataFileComparison::saveFile2DigestsToURL(const std::filesystem::path &path,
                                                 ZPError *error) const {
    return saveDigests(_digests2, path, error);
}

bool WQDataFileComparison::saveSummaryToURL(const std::filesystem::path *path,
                                            ZPError *error) const {
    const FileKeys added = _fileKeysAdded.value_or(FileKeys());
    const FileKeys removed = _fileKeysRemoved.value_or(FileKeys());
    const FileKeys changed = _fileKeysChanged.value_or(FileKeys());
    std::string text = summaryHead(added.size(), removed.size(), changed.size());
    const auto appendFiles = [&text](const char *title, const FileKeys &keys) {
        appendTitle(text, title);
        for (const std::uint32_t key : keys)
            text += ZPFormat("%08x\n", key);
    };
    appendFiles("Added files", added);
    appendFiles("Removed files", removed);
    appendFiles("Changed files", changed);
    return saveText(text, path, error);
}

bool WQDataFileComparison::saveLandBlockSummaryToURL(const std::filesystem::path *path,
                                                     ZPError *error) const {
    const WQLandBlockSet added = _landBlocksAdded.value_or(WQLandBlockSet());
    const WQLandBlockSet removed = _landBlocksRemoved.value_or(WQLandBlockSet());
    const WQLandBlockSet changed = _landBlocksChanged.value_or(WQLandBlockSet());
    std::string text = summaryHead(added.size(), removed.size(), changed.size());
    appendTitle(text, "Added land blocks");
    _appendLandBlocks(added.numbers(), text);
    appendTitle(text, "Removed land blocks");
    _appendLandBlocks(removed.numbers(), text);
    appendTitle(text, "Changed land blocks");
    _appendLandBlocks(changed.numbers(), text);
    return saveText(text, path, error);
}

void WQDataFileComparison::_appendLandBlocks(std::span<const std::uint32_t> landBlocks,
                                             std::string &toString) {
    const WQKnownDungeonDictionary &names = WQKnownDungeonNames();
    for (const std::uint32_t number : landBlocks) {
        const std::string place =
            WQStringFromMapCoordinate(WQMapCoordinateForCellID(WQIdentifierOfCell(number, 0)));
        if (const auto name = names.find(number); name != names.end())
            toString += ZPFormat("%04x  %s -- %.*s\n", number, place.c_str(),
                                 static_cast<int>(name->second.size()), name->second.data());
        else
            toString += ZPFormat("%04x  %s\n", number, place.c_str());
    }
}
