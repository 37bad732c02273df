// How a chain of blocks is followed, checked and gathered.
//
// The file may change while it is read, whatever its lock says. So nothing that was checked once is
// trusted later: each word is fetched once, and held against the bounds before it is used.

#include "archive/ZPGorvaneBlockStorage.h"

#include "io/ZPSystemLog.h"

#include <cerrno>

using namespace ZPGorvaneLayout;

namespace {

/// A chain may go on past its file's last byte; a longer rest than this is remembered as sound.
constexpr std::uint64_t kFewBlocks = 16;
/// From so many bytes on, a copy that finds no memory is the file's affair.
constexpr std::uint32_t kLargeCopy = 1 << 20;
constexpr char kChanged[] = "The chain changed while it was read.";

ZPError storageError(ZPGorvaneStorageErrorCode code, std::string reason, std::uint32_t first) {
    return {kZPGorvaneStorageErrorDomain,
            code,
            {{NSLocalizedFailureReasonErrorKey, std::move(reason)},
             {kZPGorvaneStorageErrorKey_FirstBlockOffset, std::uint64_t{first}}}};
}

ZPError blockError(ZPGorvaneStorageErrorCode code, std::string reason, std::uint32_t first,
                   std::uint32_t block) {
    ZPError error = storageError(code, std::move(reason), first);
    error.userInfo[kZPGorvaneStorageErrorKey_BlockOffset] = std::uint64_t{block};
    return error;
}

} // namespace

/// One chain of the file as it is at the moment.
class ZPGorvaneBlockStorage::Chain {
  public:
    Chain(const ZPGorvaneBlockStorage &storage, std::uint32_t first)
        : _storage(storage), _memory(storage._chainMemory), _bytes(storage.fileBytes()),
          _blockSize(storage._blockSize), _first(first) {}

    /// The fault of the chain, if any; else its first bytes are in `found`, with a copy in
    /// `scratch` unless one block holds them all.
    std::optional<ZPError> read(std::uint32_t expectedLength, ZPData &scratch,
                                std::span<const std::byte> &found);
    /// Whether the file lost bytes since this was made, which may have been read as zeros.
    bool isOutOfDate() const { return _bytes.size() != _storage.fileBytes().size(); }

  private:
    std::optional<ZPError> check(std::uint32_t expectedLength, std::uint64_t &length);
    std::optional<ZPError> gather(std::uint32_t expectedLength, ZPData &data) const;

    std::uint32_t linkOfBlock(std::uint32_t offset) const {
        return _storage.linkAtOffset(_bytes, offset);
    }
    /// The same, 0 where the file has no such block: for blocks that may have changed since they
    /// were checked.
    std::uint32_t linkOfBlockOrEnd(std::uint32_t offset) const {
        return offset + std::size_t{kLinkSize} <= _bytes.size() ? linkOfBlock(offset) : 0;
    }
    /// The block's payload as far as the file has it; its link was read before.
    std::span<const std::byte> payloadOfBlock(std::uint32_t offset) const {
        const auto rest = _bytes.subspan(offset + std::size_t{kLinkSize});
        return rest.first(std::min<std::size_t>(rest.size(), _storage.payloadSize()));
    }
    std::uint64_t blockCount() const { return _storage.reachableBlockCount() + 1; }

    std::optional<ZPError> faultOfBlockOffset(std::uint32_t offset) const;
    ZPError loopTo(std::uint32_t offset) const;
    ZPError exceptionInBlock(std::uint32_t offset, const char *text) const;

    std::uint32_t firstBlockOfLoop(std::uint64_t loopLength) const;
    void rememberLoop(std::uint32_t first);
    void remember(std::uint32_t block, std::uint32_t end, std::uint32_t word);

    const ZPGorvaneBlockStorage &_storage;
    ZPGorvaneChainMemory &_memory;
    const std::span<const std::byte> _bytes;
    const std::uint32_t _blockSize;
    const std::uint32_t _first;
};

// -- faults

std::optional<ZPError>
ZPGorvaneBlockStorage::Chain::faultOfBlockOffset(std::uint32_t offset) const {
    const std::uint32_t fileSize = _storage._fileSize;
    if (offset % _blockSize != 0)
        return blockError(ZPGorvaneStorageErrorNotOnBlockBoundary,
                          ZPFormat("Block offset %08x does not begin on a block boundary", offset),
                          _first, offset);
    if (offset < _blockSize || offset >= fileSize) {
        ZPError error = blockError(
            ZPGorvaneStorageErrorOutsideDataArea,
            ZPFormat("Block offset %08x does not fall within data area of file (%08x - %08x)",
                     offset, _blockSize, fileSize),
            _first, offset);
        error.userInfo[kZPGorvaneStorageErrorKey_FirstValidBlockOffset] = std::uint64_t{_blockSize};
        error.userInfo[kZPGorvaneStorageErrorKey_LastValidBlockOffset] = std::uint64_t{fileSize};
        return error;
    }
    // Only an archive past 2 GiB gets here with the bit set.
    if ((offset & kFreeBit) != 0)
        return blockError(
            ZPGorvaneStorageErrorFreeBlock,
            ZPFormat("Block chain starting at %08x contains free block %08x", _first, offset),
            _first, offset);
    return std::nullopt;
}

ZPError ZPGorvaneBlockStorage::Chain::loopTo(std::uint32_t offset) const {
    return blockError(
        ZPGorvaneStorageErrorLoop,
        ZPFormat("Block chain starting at %08x contains loop to %08x", _first, offset), _first,
        offset);
}

ZPError ZPGorvaneBlockStorage::Chain::exceptionInBlock(std::uint32_t offset,
                                                       const char *text) const {
    ZPError error = blockError(ZPGorvaneStorageErrorException,
                               "Caught exception trying to read block", _first, offset);
    error.userInfo[kZPGorvaneStorageErrorKey_Exception] = std::string(text);
    return error;
}

// -- checking

/// Follows the chain to its end and counts the payload bytes; once there are as many as expected,
/// the count may stop short.
///
/// A loop is found by comparing each block with one marked earlier, the mark moving on at every
/// power of two (Brent): two registers in place of a set of the blocks visited.
std::optional<ZPError> ZPGorvaneBlockStorage::Chain::check(std::uint32_t expectedLength,
                                                           std::uint64_t &length) {
    const bool hasMemory = _memory.hasRoom();
    std::uint32_t marked = 0, lastFollowed = 0, firstPastEnd = 0;
    std::uint64_t steps = 0, stepsToMark = 0, nextMark = 1, blocksPastEnd = 0;
    std::uint32_t offset = _first;
    bool leadsToFault = false;
    try {
        while (offset != 0) {
            if (auto fault = faultOfBlockOffset(offset)) {
                remember(_first, lastFollowed, lastFollowed);
                return fault;
            }
            if (offset == marked) {
                const std::uint32_t entry = firstBlockOfLoop(steps - stepsToMark);
                rememberLoop(entry);
                return loopTo(entry);
            }
            if (++steps == nextMark) {
                marked = offset;
                stepsToMark = steps - 1;
                nextMark *= 2;
            }
            if (length >= expectedLength && blocksPastEnd++ == 0)
                firstPastEnd = offset;
            if (hasMemory) {
                const std::uint32_t word = _memory.wordOfBlock(offset / _blockSize);
                if (word == offset) {
                    remember(_first, offset, offset);
                    return loopTo(offset);
                }
                if (word == ZPGorvaneChainMemory::kSound && blocksPastEnd > 0)
                    break;
                if (word > ZPGorvaneChainMemory::kSound) {
                    offset = word;
                    leadsToFault = true;
                    continue;
                }
            }
            const std::uint32_t link = linkOfBlock(offset);
            length += payloadOfBlock(offset).size();
            lastFollowed = offset;
            offset = link;
        }
        if (leadsToFault)
            return exceptionInBlock(lastFollowed, kChanged);
        if (blocksPastEnd > kFewBlocks)
            remember(firstPastEnd, 0, ZPGorvaneChainMemory::kSound);
    } catch (const ZPRangeException &exception) {
        remember(_first, offset, offset);
        return exceptionInBlock(offset, exception.what());
    }
    return std::nullopt;
}

/// Where a chain that loops comes back to: of two pointers as far apart as the loop is long, the
/// one behind meets the other there.
std::uint32_t ZPGorvaneBlockStorage::Chain::firstBlockOfLoop(std::uint64_t loopLength) const {
    std::uint32_t behind = _first, ahead = _first;
    for (std::uint64_t step = 0; step < loopLength; ++step)
        ahead = linkOfBlockOrEnd(ahead);
    // Ends before it has seen all blocks unless the file has changed.
    for (std::uint64_t left = blockCount(); behind != ahead && left > 0; --left) {
        behind = linkOfBlockOrEnd(behind);
        ahead = linkOfBlockOrEnd(ahead);
    }
    return ahead;
}

/// Remembers the way to a loop and the loop's own blocks.
void ZPGorvaneBlockStorage::Chain::rememberLoop(std::uint32_t first) {
    remember(_first, first, first);
    _memory.makeRoom(_storage.reachableBlockCount());
    if (!_memory.hasRoom())
        return;
    std::uint32_t block = first;
    for (std::uint64_t left = blockCount(); left > 0; --left) {
        _memory.noteBlock(block / _blockSize, block);
        block = linkOfBlockOrEnd(block);
        if (block == first)
            break;
    }
}

/// Remembers a word for the blocks of the chain from one to, but not with, another; the rest is
/// known where one of them is.
void ZPGorvaneBlockStorage::Chain::remember(std::uint32_t block, std::uint32_t end,
                                            std::uint32_t word) {
    if (block == end || word == ZPGorvaneChainMemory::kUnknown)
        return;
    _memory.makeRoom(_storage.reachableBlockCount());
    if (!_memory.hasRoom())
        return;
    for (std::uint64_t left = blockCount(); block != end && block != 0 && left > 0; --left) {
        const std::uint64_t number = block / _blockSize;
        if (_memory.wordOfBlock(number) != ZPGorvaneChainMemory::kUnknown)
            return;
        _memory.noteBlock(number, word);
        block = linkOfBlockOrEnd(block);
    }
}

// -- reading

std::optional<ZPError> ZPGorvaneBlockStorage::Chain::read(std::uint32_t expectedLength,
                                                          ZPData &scratch,
                                                          std::span<const std::byte> &found) {
    std::uint64_t length = 0;
    if (auto fault = check(expectedLength, length))
        return fault;
    if (length < expectedLength)
        return storageError(ZPGorvaneStorageErrorTooShort,
                            ZPFormat("Data length (%llu) is shorter than expected (%u)",
                                     static_cast<unsigned long long>(length), expectedLength),
                            _first);
    if (expectedLength == 0)
        return std::nullopt;
    if (const auto payload = payloadOfBlock(_first); payload.size() >= expectedLength) {
        found = payload.first(expectedLength);
        return std::nullopt;
    }
    try {
        auto fault = gather(expectedLength, scratch);
        found = scratch;
        return fault;
    } catch (const std::bad_alloc &) {
        // A machine that has no room for a small copy has none to go on; what would be left out
        // then, file by file, would look like damage.
        if (expectedLength < kLargeCopy)
            throw;
        return ZPError::posix(ENOMEM);
    }
}

std::optional<ZPError> ZPGorvaneBlockStorage::Chain::gather(std::uint32_t expectedLength,
                                                            ZPData &data) const {
    data.clear();
    data.reserve(expectedLength); // no more than the chain was found to hold
    std::uint32_t block = _first;
    try {
        for (std::uint64_t left = blockCount(); data.size() < expectedLength; --left) {
            if (block == 0 || left == 0)
                return exceptionInBlock(block, kChanged);
            if (auto fault = faultOfBlockOffset(block))
                return fault;
            const std::uint32_t link = linkOfBlock(block);
            const auto payload = payloadOfBlock(block);
            const auto wanted =
                payload.first(std::min(payload.size(), expectedLength - data.size()));
            data.insert(data.end(), wanted.begin(), wanted.end());
            block = link;
        }
    } catch (const ZPRangeException &exception) {
        return exceptionInBlock(block, exception.what());
    }
    return std::nullopt;
}

std::optional<ZPError>
ZPGorvaneBlockStorage::findBytesAtOffset(std::uint32_t offset, std::uint32_t expectedLength,
                                         ZPData &scratch, std::span<const std::byte> &found) const {
    while (true) {
        found = {};
        Chain chain(*this, offset);
        auto fault = chain.read(expectedLength, scratch, found);
        if (!chain.isOutOfDate())
            return fault;
    }
}

std::string ZPGorvaneBlockStorage::exceptionLine(const ZPError &error, const std::string &archive) {
    const auto word = [&](const char *key) {
        return static_cast<std::uint32_t>(std::get<std::uint64_t>(error.userInfo.at(key)));
    };
    if (error.domain != kZPGorvaneStorageErrorDomain ||
        error.code != ZPGorvaneStorageErrorException)
        return {};
    return ZPFormat(
        "Caught exception: %s (block %08x of the chain starting at %08x%s%s)",
        std::get<std::string>(error.userInfo.at(kZPGorvaneStorageErrorKey_Exception)).c_str(),
        word(kZPGorvaneStorageErrorKey_BlockOffset),
        word(kZPGorvaneStorageErrorKey_FirstBlockOffset), archive.empty() ? "" : " of ",
        archive.c_str());
}

std::optional<std::span<const std::byte>> ZPGorvaneBlockStorage::readBytesFromBlocksAtOffset(
    std::uint32_t offset, std::uint32_t expectedLength, ZPData &scratch, ZPError *error) const {
    std::span<const std::byte> found;
    auto fault = findBytesAtOffset(offset, expectedLength, scratch, found);
    if (!fault)
        return found;
    if (const std::string line = exceptionLine(*fault); !line.empty())
        ZPLog("%s", line.c_str());
    ZPFail(error, std::move(*fault));
    return std::nullopt;
}

std::optional<ZPData> ZPGorvaneBlockStorage::readDataFromBlocksAtOffset(
    std::uint32_t offset, std::uint32_t expectedLength, ZPError *error) const {
    ZPData data;
    const auto bytes = readBytesFromBlocksAtOffset(offset, expectedLength, data, error);
    if (!bytes)
        return std::nullopt;
    if (bytes->data() != data.data())
        data.assign(bytes->begin(), bytes->end());
    return data;
}
