#include "archive/ZPGorvaneArchiveCheck.h"

#include "archive/ZPGorvaneDirectoryReader.h"
#include "io/ZPSystemLog.h"

#include <algorithm>
#include <set>

using namespace ZPGorvaneLayout;
using enum ZPGorvaneFinding::Severity;

namespace {

/// Or of the archive, and not of a file's own chain.
bool isOfDirectory(const ZPGorvaneFinding &finding) {
    return !finding.identifier || finding.kind == std::string_view(kZPGorvaneOrderFinding);
}

} // namespace

ZPGorvaneArchiveCheck::ZPGorvaneArchiveCheck(const ZPGorvaneDataFile &dataFile)
    : _dataFile(dataFile), _storage(*dataFile.blockStorage()), _map(_storage),
      _entries(dataFile.entriesInOrder()), _fits(_entries.size()), _isRunInto(_entries.size()),
      _stepsLeft(_storage.blockCount()) {}

void ZPGorvaneArchiveCheck::add(ZPGorvaneFinding::Severity severity, const char *kind,
                                std::uint64_t offset, std::string cause,
                                std::optional<std::uint32_t> identifier) {
    _findings.push_back(
        {severity, kind, identifier, offset, std::move(cause), _dataFile.path().string()});
}

ZPGorvaneFindings ZPGorvaneArchiveCheck::run() {
    checkHeader();
    checkDirectory(_storage.rootOffset(), rootPlace(_storage.version()), 1,
                   {-1, std::int64_t{1} << 32});
    checkFreeChain();
    checkFiles();
    findLostBlocks();
    addReadersFindings();
    return std::move(_findings);
}

void ZPGorvaneArchiveCheck::checkHeader() {
    const std::uint32_t blockSize = _storage.blockSize(), fileSize = _storage.fileSize();
    const std::size_t size = _storage.fileHandle()->bytes().size();
    if (blockSize != 256 && blockSize != 1024)
        add(warning, kZPGorvaneHeaderFinding, 0,
            ZPFormat("Unrecognized block size: %u", blockSize));
    if (fileSize % blockSize != 0)
        add(error, kZPGorvaneHeaderFinding, 0,
            ZPFormat("File size is not a multiple of the block size (%u bytes)", blockSize));
    else if (fileSize % kFileSizeUnit != 0)
        add(warning, kZPGorvaneHeaderFinding, 0,
            ZPFormat("File size (%u bytes) is not a multiple of 1,048,576 bytes", fileSize));
    if (size != fileSize)
        add(error, kZPGorvaneHeaderFinding, 0,
            ZPFormat("The header has %u bytes, the file %zu", fileSize, size));
}

/// Follows a chain to its end and claims its blocks; the first fault is told, and ends it.
template <class Fault>
ZPGorvaneArchiveCheck::ChainEnd
ZPGorvaneArchiveCheck::followChain(std::uint32_t first, std::uint32_t owner, Fault fault) {
    ChainEnd chain;
    std::uint32_t previous = 0;
    for (std::uint32_t offset = first; offset != 0; ++chain.blockCount) {
        if (const std::string reason = _map.faultOfOffset(offset); !reason.empty()) {
            const bool isFree = (offset & kFreeBit) != 0 && chain.blockCount > 0;
            fault(kZPGorvaneFileChainFinding, previous,
                  isFree ? ZPFormat("the chain runs into the free block %08x", previous)
                         : "the chain's block " + reason);
            return chain;
        }
        std::uint32_t &current = _map.ownerAtOffset(offset);
        if (current == owner && owner != ZPGorvaneBlockMap::directory) {
            fault(kZPGorvaneFileChainFinding, offset,
                  ZPFormat("the chain contains a loop to %08x", offset));
            return chain;
        }
        if (current != ZPGorvaneBlockMap::nobody) {
            if (owner >= ZPGorvaneBlockMap::firstFile && current >= ZPGorvaneBlockMap::firstFile)
                _meetings.push_back({owner - ZPGorvaneBlockMap::firstFile,
                                     current - ZPGorvaneBlockMap::firstFile, offset, previous,
                                     chain.blockCount});
            else
                fault(kZPGorvaneSharedFinding, offset,
                      ZPFormat("block %08x belongs to %s too", offset,
                               describeOwner(current).c_str()));
            return chain;
        }
        current = owner;
        previous = offset;
        offset = _map.linkAtOffset(offset);
    }
    // The archive may end within its last block.
    chain.length = chain.blockCount * _storage.payloadSize();
    if (const std::uint64_t last = _map.end() - _map.blockSize();
        chain.blockCount > 0 && _map.ownerAtOffset(last) == owner)
        chain.length -= _storage.payloadSize() - _map.payloadAtOffset(last);
    chain.isSound = true;
    return chain;
}

std::string ZPGorvaneArchiveCheck::describeOwner(std::uint32_t owner) const {
    switch (owner) {
    case ZPGorvaneBlockMap::header: return "the header";
    case ZPGorvaneBlockMap::freeChain: return "the free chain";
    case ZPGorvaneBlockMap::directory: return "a directory";
    default:
        return ZPFormat("file %08x", _entries[owner - ZPGorvaneBlockMap::firstFile].identifier);
    }
}

void ZPGorvaneArchiveCheck::checkDirectory(std::uint32_t offset, std::uint64_t place,
                                           unsigned depth, Bounds bounds) {
    const auto fault = [&](const char *kind, std::uint64_t /*block*/, const std::string &cause) {
        // What a directory shares is as bad as a chain that breaks.
        add(error, kind == kZPGorvaneFileChainFinding ? kZPGorvaneDirectoryFinding : kind, place,
            ZPFormat("directory %08x: %s", offset, cause.c_str()));
    };
    if (depth > kMostLevels)
        return fault(kZPGorvaneDirectoryFinding, offset, "lies deeper than any archive is");
    if (!followChain(offset, ZPGorvaneBlockMap::directory, fault).isSound)
        return;
    ZPData scratch;
    ZPError reason;
    const auto size = static_cast<std::uint32_t>(_dataFile.family().directorySize());
    const auto node = _storage.readBytesFromBlocksAtOffset(offset, size, scratch, &reason);
    if (!node)
        return fault(kZPGorvaneDirectoryFinding, offset, reason.failureReason());
    checkNode(offset, *node, depth, bounds);
}

void ZPGorvaneArchiveCheck::checkNode(std::uint32_t offset, std::span<const std::byte> node,
                                      unsigned depth, Bounds bounds) {
    ZPDataCursor cursor(node);
    cursor.setOffset(kFileCountPlace);
    std::uint32_t count = cursor.readLittleInt32();
    if (count > kMostFiles) {
        add(error, kZPGorvaneDirectoryFinding, offset,
            ZPFormat("directory %08x has an invalid number of files (%u), must be count <= 61",
                     offset, count));
        count = std::min(count, kMostFiles);
    }
    const auto entries = readEntries(offset, cursor, count, bounds);
    cursor.setOffset(0);
    std::vector<std::uint32_t> children;
    for (std::uint32_t index = 0; index <= count; ++index) {
        const std::uint32_t child = cursor.readLittleInt32();
        if (child == 0 || child == kUnusedChild)
            break;
        children.push_back(child);
    }
    if (children.empty()) {
        if (_leafDepth.value_or(depth) != depth)
            add(error, kZPGorvaneDirectoryFinding, offset,
                ZPFormat("directory %08x lies at level %u, other leaves at %u", offset, depth,
                         *_leafDepth));
        _leafDepth = _leafDepth.value_or(depth);
    } else if (children.size() != entries.size() + 1) {
        add(error, kZPGorvaneDirectoryFinding, offset,
            ZPFormat("directory %08x has %zu files and %zu directories below it, not one more",
                     offset, entries.size(), children.size()));
    }
    const auto identifierAt = [&](std::size_t place, std::int64_t without) {
        return place < entries.size() ? std::int64_t{entries[place].identifier} : without;
    };
    for (std::size_t index = 0; index < children.size(); ++index)
        checkDirectory(children[index],
                       ZPGorvaneDirectoryReader::placeOfLink(_storage, offset, index), depth + 1,
                       {index > 0 ? identifierAt(index - 1, bounds.above) : bounds.above,
                        identifierAt(index, bounds.below)});
}

std::vector<ZPGorvaneFileEntry> ZPGorvaneArchiveCheck::readEntries(std::uint32_t offset,
                                                                   ZPDataCursor &cursor,
                                                                   std::uint32_t count,
                                                                   Bounds bounds) {
    std::vector<ZPGorvaneFileEntry> entries;
    std::int64_t previous = bounds.above;
    for (std::uint32_t index = 0; index < count; ++index) {
        ZPGorvaneFileEntry entry;
        if (!_dataFile.family().readFileEntry(cursor, entry)) {
            add(error, kZPGorvaneDirectoryFinding, offset,
                ZPFormat("directory %08x: its file %u of %u is an empty slot", offset, index,
                         count));
            break;
        }
        if (entry.identifier <= previous)
            add(error, kZPGorvaneOrderFinding, offset,
                ZPFormat("directory %08x: %08x does not come after %08x", offset, entry.identifier,
                         static_cast<unsigned>(previous)),
                entry.identifier);
        else if (entry.identifier >= bounds.below)
            add(error, kZPGorvaneOrderFinding, offset,
                ZPFormat("directory %08x: %08x does not come before %08x", offset, entry.identifier,
                         static_cast<unsigned>(bounds.below)),
                entry.identifier);
        previous = entry.identifier;
        entries.push_back(entry);
    }
    return entries;
}

void ZPGorvaneArchiveCheck::checkFreeChain() {
    const auto fault = [&](std::uint64_t place, std::string cause) {
        add(error, kZPGorvaneFreeChainFinding, place, std::move(cause));
    };
    std::uint32_t count = 0, last = 0;
    for (std::uint32_t offset = _storage.firstFreeBlock(); offset != 0;) {
        if (const std::string reason = _map.faultOfOffset(offset); !reason.empty()) {
            fault(last, "free block " + reason);
            break;
        }
        std::uint32_t &owner = _map.ownerAtOffset(offset);
        if (owner == ZPGorvaneBlockMap::freeChain) {
            fault(offset, ZPFormat("Free block chain contains a loop to %08x", offset));
            break;
        }
        if (owner != ZPGorvaneBlockMap::nobody) {
            add(error, kZPGorvaneSharedFinding, offset,
                ZPFormat("block %08x of the free chain belongs to %s", offset,
                         describeOwner(owner).c_str()));
            break;
        }
        owner = ZPGorvaneBlockMap::freeChain;
        const std::uint32_t link = _map.linkAtOffset(offset);
        if ((link & kFreeBit) == 0)
            fault(offset, ZPFormat("Free block %08x is not marked free", offset));
        ++count;
        last = offset;
        offset = link & ~kFreeBit;
    }
    if (last != _storage.lastFreeBlock())
        fault(last, ZPFormat("Free block chain ends at %08x, the header has %08x", last,
                             _storage.lastFreeBlock()));
    if (count != _storage.freeBlockCount())
        fault(last, ZPFormat("Free block count recorded in header (%u) does not match actual free "
                             "block count (%u)",
                             _storage.freeBlockCount(), count));
}

void ZPGorvaneArchiveCheck::checkFiles() {
    constexpr std::size_t kAhead = 16;
    for (std::uint32_t index = 0; index < _entries.size(); ++index) {
        if (index + kAhead < _entries.size())
            _map.prefetch(_entries[index + kAhead].fileOffset);
        checkFile(index);
    }
    // Who strays shows when all chains were followed.
    for (const Meeting &meeting : _meetings)
        checkMeeting(meeting);
    std::ranges::stable_sort(_findings, {}, [](const ZPGorvaneFinding &finding) {
        return isOfDirectory(finding) ? std::int64_t{-1} : std::int64_t{*finding.identifier};
    });
}

std::uint64_t ZPGorvaneArchiveCheck::blocksNeeded(const ZPGorvaneFileEntry &entry) const {
    const std::uint64_t payload = _storage.payloadSize();
    return std::max<std::uint64_t>((entry.fileSize + payload - 1) / payload, 1);
}

void ZPGorvaneArchiveCheck::checkFile(std::uint32_t index) {
    const ZPGorvaneFileEntry &entry = _entries[index];
    const auto fault = [&](const char *kind, std::uint64_t place, std::string cause) {
        add(error, kind, place, std::move(cause), entry.identifier);
    };
    const ChainEnd chain =
        followChain(entry.fileOffset, ZPGorvaneBlockMap::firstFile + index, fault);
    if (!chain.isSound)
        return;
    const std::uint64_t needed = blocksNeeded(entry);
    _fits[index] = chain.blockCount == needed;
    if (chain.length < entry.fileSize)
        fault(kZPGorvaneSizeFinding, entry.fileOffset,
              ZPFormat("Data length (%llu) is shorter than expected (%u)",
                       static_cast<unsigned long long>(chain.length), entry.fileSize));
    else if (!_dataFile.mayRead(entry))
        fault(kZPGorvaneSizeFinding, entry.fileOffset,
              ZPFormat("The files claim more than the archive can hold, and this one %u bytes",
                       entry.fileSize));
    else if (chain.blockCount > needed)
        add(warning, kZPGorvaneSizeFinding, entry.fileOffset,
            ZPFormat("the chain has %llu blocks, its %u bytes need %llu",
                     static_cast<unsigned long long>(chain.blockCount), entry.fileSize,
                     static_cast<unsigned long long>(needed)),
            entry.identifier);
}

// -- chains that meet

void ZPGorvaneArchiveCheck::checkMeeting(const Meeting &meeting) {
    const bool isFile = isFileStraying(meeting);
    const std::uint32_t stray = isFile ? meeting.file : meeting.owner;
    const std::uint32_t other = isFile ? meeting.owner : meeting.file;
    add(error, kZPGorvaneSharedFinding, meeting.block,
        ZPFormat("block %08x belongs to file %08x too", meeting.block, _entries[other].identifier),
        _entries[stray].identifier);
    // What it holds may be the other's. Once will do.
    if (!_isRunInto[other])
        add(error, kZPGorvaneSharedFinding, meeting.block,
            ZPFormat("file %08x strays into its block %08x", _entries[stray].identifier,
                     meeting.block),
            _entries[other].identifier);
    _isRunInto[other] = true;
}

/// Whether the file strays into the owner's chain, and not the owner into the file's. What tells
/// them apart, the surest first: a chain that is not as long as its file's size wants it; one that
/// runs into the first block of the other's file; an identifier in a first block; the block that
/// lies right before, where an archive grew.
bool ZPGorvaneArchiveCheck::isFileStraying(const Meeting &meeting) {
    const ZPGorvaneFileEntry &file = _entries[meeting.file], &owner = _entries[meeting.owner];
    const std::uint64_t needed = blocksNeeded(file);
    const bool fits = meeting.blocksBefore < needed &&
                      meeting.blocksBefore + countBlocks(meeting.block, needed) == needed;
    if (fits != _fits[meeting.owner])
        return !fits;
    const bool beginsFile = file.fileOffset == meeting.block;
    const bool beginsOwner = owner.fileOffset == meeting.block;
    if (beginsFile != beginsOwner)
        return beginsOwner;
    if (beginsFile) {
        const std::uint32_t stored = _map.payloadAtOffset(meeting.block) >= kLinkSize
                                         ? _map.wordAtOffset(meeting.block + kLinkSize)
                                         : 0;
        return stored != file.identifier || stored == owner.identifier;
    }
    return meeting.previous + _map.blockSize() != meeting.block ||
           blockBefore(owner.fileOffset, meeting.block) + _map.blockSize() == meeting.block;
}

/// Of a chain from a block on, up to one more than `most`.
std::uint64_t ZPGorvaneArchiveCheck::countBlocks(std::uint32_t first, std::uint64_t most) {
    std::uint64_t count = 0;
    for (std::uint32_t offset = first; offset != 0 && count <= most && _stepsLeft > 0;
         ++count, --_stepsLeft) {
        if (!_map.faultOfOffset(offset).empty())
            return most + 1;
        offset = _map.linkAtOffset(offset);
    }
    return count;
}

/// Which block of a chain links to another; 0 where that does not show.
std::uint32_t ZPGorvaneArchiveCheck::blockBefore(std::uint32_t first, std::uint32_t block) {
    for (std::uint32_t offset = first; offset != 0 && _stepsLeft > 0; --_stepsLeft) {
        if (!_map.faultOfOffset(offset).empty())
            return 0;
        const std::uint32_t next = _map.linkAtOffset(offset);
        if (next == block)
            return offset;
        offset = next;
    }
    return 0;
}

/// Blocks that nobody claimed, those beside each other as one finding; where there are more such
/// places than anybody reads, the rest as one.
void ZPGorvaneArchiveCheck::findLostBlocks() {
    // All that is looked at once: a long archive's pages need not stay in memory.
    constexpr std::uint64_t kBytesAtOnce = std::uint64_t{64} << 20;
    constexpr std::size_t kMostPlaces = 10'000;
    enum class Use { used, free, nobody };
    const std::uint32_t step = _map.blockSize();
    std::size_t placeCount = 0;
    std::uint64_t blocksPassedOver = 0;
    Use use = Use::used;
    std::uint64_t first = 0;
    const auto endPlace = [&](std::uint64_t end) {
        const std::uint64_t blockCount = (end - first) / step;
        if (use == Use::used)
            return;
        if (++placeCount > kMostPlaces)
            blocksPassedOver += blockCount;
        else
            add(warning, kZPGorvaneLostFinding, first,
                ZPFormat("%llu blocks from %08llx on are %s",
                         static_cast<unsigned long long>(blockCount),
                         static_cast<unsigned long long>(first),
                         use == Use::free ? "marked free and not in the free chain"
                                          : "used by nobody"));
    };
    for (std::uint64_t offset = 0; offset < _map.end(); offset += step) {
        if (offset % kBytesAtOnce < step && offset > 0)
            _storage.fileHandle()->releasePages();
        const Use found = _map.isUsed(offset)                           ? Use::used
                          : (_map.linkAtOffset(offset) & kFreeBit) != 0 ? Use::free
                                                                        : Use::nobody;
        if (found == use)
            continue;
        endPlace(offset);
        use = found;
        first = offset;
    }
    endPlace(_map.end());
    if (placeCount > kMostPlaces)
        add(warning, kZPGorvaneLostFinding, first,
            ZPFormat("%llu blocks more in %zu places are used by nobody or marked free and not in "
                     "the free chain",
                     static_cast<unsigned long long>(blocksPassedOver), placeCount - kMostPlaces));
}

/// What the library's reader found of the directory where this has found nothing, such as a child
/// that a count leaves out.
void ZPGorvaneArchiveCheck::addReadersFindings() {
    std::set<std::uint64_t> known;
    for (const ZPGorvaneFinding &finding : _findings)
        if (isOfDirectory(finding))
            known.insert(finding.offset);
    for (ZPGorvaneFinding &finding : _dataFile.findings().kept())
        if (!finding.identifier && !known.contains(finding.offset) &&
            finding.kind == std::string_view(kZPGorvaneDirectoryFinding))
            _findings.push_back(std::move(finding));
}
