#include "game/WQFileHasher.h"

#include "io/ZPParallelLog.h"
#include "io/ZPSystemLog.h"

#include <cstring>

namespace {

/// Progress is reported at multiples of this.
constexpr std::size_t kFilesPerReport = 1000;
/// Some 0.2 ms of work: enough to make handing it out cheap.
constexpr std::size_t kFilesPerPart = 1000;
/// How many files ahead memory is asked for.
constexpr std::size_t kFilesAhead = 8;

const ZPGorvaneFileEntryMap &loadedEntries(WQDataFile &dataFile) {
    dataFile.loadFileEntriesIfNecessary();
    return dataFile.fileEntriesByIdentifier();
}

/// Spans of one length. The standard's algorithm goes byte by byte here.
bool areEqual(std::span<const std::byte> bytes, std::span<const std::byte> others) {
    return bytes.empty() || std::memcmp(bytes.data(), others.data(), bytes.size()) == 0;
}

} // namespace

/// The way through a part of the index, and beside it through the newer archive's.
class WQFileHasher::Part {
  public:
    Part(WQFileHasher &older, WQFileHasher *newer, std::size_t first)
        : _older(older), _newer(newer), _first(first),
          _end(std::min(first + kFilesPerPart, older._entries.size())) {
        if (_newer != nullptr)
            _twin = static_cast<std::size_t>(
                std::ranges::lower_bound(_newer->_entries, _older._entries[first].identifier, {},
                                         &ZPGorvaneFileEntry::identifier) -
                _newer->_entries.begin());
    }

    void run() {
        const std::size_t count = _older._entries.size();
        for (std::size_t index = _first; index < _end; ++index) {
            const std::size_t next = index + kFilesAhead;
            if (next < _end && _older._states[next] == State::waiting)
                _older._dataFile.prefetchFileEntry(_older._entries[next]);
            if (_older._states[index] == State::waiting)
                hashFile(index);
            if (index % kFilesPerReport == 0)
                ZPLog("hashed %8zu / %8zu = %5.1f %%", index, count,
                      static_cast<double>(index) * 100 / static_cast<double>(count));
        }
    }

  private:
    void hashFile(std::size_t index) {
        const auto bytes = _older.readFile(index, _scratch);
        if (!bytes)
            return;
        const ZPSHA1Digest digest = ZPSHA1DigestOfData(*bytes);
        _older.setDigest(index, digest);
        if (_newer != nullptr && moveToTwin(_older._entries[index])) {
            const auto newerBytes = _newer->readFile(_twin, _newerScratch);
            if (newerBytes && areEqual(*bytes, *newerBytes))
                _newer->setDigest(_twin, digest);
        }
    }

    /// Goes on to the newer archive's file of this identifier; false where it has none, or one of
    /// another length.
    bool moveToTwin(const ZPGorvaneFileEntry &entry) {
        const ZPGorvaneFileEntryMap &entries = _newer->_entries;
        for (; _twin < entries.size() && entries[_twin].identifier < entry.identifier; ++_twin)
            if (_twin + kFilesAhead < entries.size())
                _newer->_dataFile.prefetchFileEntry(entries[_twin + kFilesAhead]);
        return _twin < entries.size() && entries[_twin].identifier == entry.identifier &&
               entries[_twin].fileSize == entry.fileSize;
    }

    WQFileHasher &_older;
    WQFileHasher *const _newer;
    const std::size_t _first, _end;
    std::size_t _twin = 0;
    ZPData _scratch, _newerScratch;
};

WQFileHasher::WQFileHasher(WQDataFile &dataFile)
    : _dataFile(dataFile), _entries(loadedEntries(dataFile)),
      _digests(ZPLargeArray<WQFileDigest>::allocate(_entries.size())), _states(_entries.size()) {}

void WQFileHasher::hashFiles(WQFileHasher *newer) {
    const std::size_t partCount = (_entries.size() + kFilesPerPart - 1) / kFilesPerPart;
    ZPParallelForWithLog(partCount,
                         [&](std::size_t part) { Part(*this, newer, part * kFilesPerPart).run(); });
    ZPLog("hashed %8zu / %8zu = 100.0 %%", _entries.size(), _entries.size());
}

/// Notes where that fails, so that what is wrong with a file is said once.
std::optional<std::span<const std::byte>> WQFileHasher::readFile(std::size_t index,
                                                                 ZPData &scratch) {
    const auto bytes = _dataFile.readBytesForFileEntry(_entries[index], scratch);
    if (!bytes)
        _states[index] = State::unreadable;
    return bytes;
}

WQFileDigestMap WQFileHasher::takeDigests() {
    std::size_t count = 0;
    for (std::size_t index = 0; index < _states.size(); ++index)
        if (_states[index] == State::hashed)
            _digests.data()[count++] = {_entries[index].identifier, _digests.data()[index].digest};
    return {std::move(_digests), count};
}
