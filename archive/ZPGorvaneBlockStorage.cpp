#include "archive/ZPGorvaneBlockStorage.h"

#include "io/ZPSystemLog.h"

#include <unordered_set>

namespace {

constexpr std::uint32_t kMagic = 0x5442;
constexpr std::uint32_t kFormatCheck = 0x004C5000;
/// A chain may go on past its file's last byte, and must be sound there too. Only so many blocks of
/// that are looked at: a hostile archive could have all its files end in the same long chain.
constexpr std::uint64_t kBlocksPastEnd = 1024;

ZPError storageError(ZPGorvaneStorageErrorCode code, std::string reason, std::uint32_t first) {
    return {ZPGorvaneStorageErrorDomain,
            code,
            {{NSLocalizedFailureReasonErrorKey, std::move(reason)},
             {ZPGorvaneStorageErrorKey_FirstBlockOffset, std::uint64_t{first}}}};
}

ZPError blockError(ZPGorvaneStorageErrorCode code, std::string reason, std::uint32_t first,
                   std::uint32_t block) {
    ZPError error = storageError(code, std::move(reason), first);
    error.userInfo[ZPGorvaneStorageErrorKey_BlockOffset] = std::uint64_t{block};
    return error;
}

} // namespace

// -- opening

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV1StorageWithFileAtPath(const std::filesystem::path &path,
                                                   ZPError *error) {
    return initV1StorageWithFileHandle(_fileHandleAtPath(path, error));
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV2StorageWithFileAtPath(const std::filesystem::path &path,
                                                   ZPError *error) {
    return initV2StorageWithFileHandle(_fileHandleAtPath(path, error));
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV3StorageWithFileAtPath(const std::filesystem::path &path,
                                                   ZPError *error) {
    return initV3StorageWithFileHandle(_fileHandleAtPath(path, error));
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV1StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle) {
    return initWithFileHandle(std::move(fileHandle), 1);
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV2StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle) {
    return initWithFileHandle(std::move(fileHandle), 2);
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV3StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle) {
    return initWithFileHandle(std::move(fileHandle), 3);
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle,
                                          std::uint32_t version) {
    if (fileHandle == nullptr)
        return nullptr;
    std::unique_ptr<ZPGorvaneBlockStorage> storage(
        new ZPGorvaneBlockStorage(std::move(fileHandle)));
    try {
        return storage->readHeader(version) ? std::move(storage) : nullptr;
    } catch (const ZPRangeException &exception) {
        ZPLog("Caught exception: %s", exception.what());
        return nullptr;
    }
}

// Byte offsets in the file; every field is a little-endian u32.
//
//                  version 1   version 2   version 3
//   format check       -           -          256      0x004C5000
//   magic             300         300         320      0x5442
//   blockSize         304         304         324
//   fileSize          308         308         328
//   contentType       312         312         332
//   contentSubtype     -          316         336
//   firstFreeBlock    316         320         340
//   lastFreeBlock     320         324         344
//   freeBlockCount    324         328         348
//   rootOffset        328         332         352
bool ZPGorvaneBlockStorage::readHeader(std::uint32_t version) {
    _version = version;
    ZPDataCursor cursor(fileBytes());
    std::uint32_t check = kFormatCheck;
    if (version == 3) {
        cursor.setOffset(256);
        check = cursor.readLittleInt32();
    }
    cursor.setOffset(version == 3 ? 320 : 300);
    const std::uint32_t magic = cursor.readLittleInt32();
    if (version == 3 && (check != kFormatCheck || magic != kMagic)) {
        ZPLog("Bad magic number for V3 storage (%08x %08x)", check, magic);
        return false;
    }
    if (magic != kMagic) {
        ZPLog("Bad magic number for V%u storage", version);
        return false;
    }
    _blockSize = cursor.readLittleInt32();
    _fileSize = cursor.readLittleInt32();
    _contentType = cursor.readLittleInt32();
    if (version != 1)
        _contentSubtype = cursor.readLittleInt32();
    _firstFreeBlock = cursor.readLittleInt32();
    _lastFreeBlock = cursor.readLittleInt32();
    _freeBlockCount = cursor.readLittleInt32();
    _rootOffset = cursor.readLittleInt32();

    if (_blockSize < 8 || _blockSize > fileBytes().size()) {
        ZPLog("Error: Block size %u does not suit a file of %zu bytes", _blockSize,
              fileBytes().size());
        return false;
    }
    return true;
}

// -- blocks

std::uint32_t ZPGorvaneBlockStorage::linkAtOffset(std::uint64_t offset) const {
    ZPDataCursor cursor(fileBytes());
    cursor.setOffset(offset);
    return cursor.readLittleInt32();
}

/// The block's payload as far as the file has it; its link was read before.
std::span<const std::byte> ZPGorvaneBlockStorage::payloadAtOffset(std::uint32_t offset) const {
    const auto rest = fileBytes().subspan(offset + std::size_t{4});
    return rest.first(std::min<std::size_t>(rest.size(), _blockSize - 4));
}

std::optional<ZPError> ZPGorvaneBlockStorage::faultOfBlockOffset(std::uint32_t offset,
                                                                 std::uint32_t first) const {
    if (offset % _blockSize != 0)
        return blockError(ZPGorvaneStorageErrorNotOnBlockBoundary,
                          ZPFormat("Block offset %08x does not begin on a block boundary", offset),
                          first, offset);
    if (offset < _blockSize || offset >= _fileSize) {
        ZPError error = blockError(
            ZPGorvaneStorageErrorOutsideDataArea,
            ZPFormat("Block offset %08x does not fall within data area of file (%08x - %08x)",
                     offset, _blockSize, _fileSize),
            first, offset);
        error.userInfo[ZPGorvaneStorageErrorKey_FirstValidBlockOffset] = std::uint64_t{_blockSize};
        error.userInfo[ZPGorvaneStorageErrorKey_LastValidBlockOffset] = std::uint64_t{_fileSize};
        return error;
    }
    // Only an archive past 2 GiB gets here with the bit set.
    if ((offset & kFreeBit) != 0)
        return blockError(
            ZPGorvaneStorageErrorFreeBlock,
            ZPFormat("Block chain starting at %08x contains free block %08x", first, offset), first,
            offset);
    return std::nullopt;
}

/// Follows a chain to its end, or far past a file of so many bytes, and gives the number of payload
/// bytes found.
///
/// A loop is found by comparing each block with one marked earlier, the mark moving on at every
/// power of two (Brent): two registers in place of a set of the blocks visited.
std::optional<std::uint64_t> ZPGorvaneBlockStorage::lengthOfChain(std::uint32_t first,
                                                                  std::uint32_t expectedLength,
                                                                  ZPError *error) const {
    std::uint64_t length = 0, blocksPastEnd = 0;
    std::uint32_t marked = 0;
    std::uint64_t blockCount = 0, nextMark = 1;
    for (std::uint32_t offset = first; offset != 0 && blocksPastEnd <= kBlocksPastEnd;) {
        if (auto fault = faultOfBlockOffset(offset, first)) {
            ZPFail(error, std::move(*fault));
            return std::nullopt;
        }
        if (offset == marked) {
            const std::uint32_t repeated = firstRepeatedBlock(first);
            ZPFail(error, blockError(ZPGorvaneStorageErrorLoop,
                                     ZPFormat("Block chain starting at %08x contains loop to %08x",
                                              first, repeated),
                                     first, repeated));
            return std::nullopt;
        }
        if (++blockCount == nextMark) {
            marked = offset;
            nextMark *= 2;
        }
        try {
            const std::uint32_t link = linkAtOffset(offset);
            blocksPastEnd += length >= expectedLength;
            length += payloadAtOffset(offset).size();
            offset = link;
        } catch (const ZPRangeException &exception) {
            ZPLog("Caught exception: %s", exception.what());
            ZPError fault = blockError(ZPGorvaneStorageErrorException,
                                       "Caught exception trying to read block", first, offset);
            fault.userInfo[ZPGorvaneStorageErrorKey_Exception] = std::string(exception.what());
            ZPFail(error, std::move(fault));
            return std::nullopt;
        }
    }
    return length;
}

/// Where a chain that is known to loop comes back to.
std::uint32_t ZPGorvaneBlockStorage::firstRepeatedBlock(std::uint32_t first) const {
    std::unordered_set<std::uint32_t> visited;
    std::uint32_t offset = first;
    while (visited.insert(offset).second)
        offset = linkAtOffset(offset);
    return offset;
}

std::optional<std::span<const std::byte>> ZPGorvaneBlockStorage::readBytesFromBlocksAtOffset(
    std::uint32_t offset, std::uint32_t expectedLength, ZPData &scratch, ZPError *error) const {
    const auto length = lengthOfChain(offset, expectedLength, error);
    if (!length)
        return std::nullopt;
    if (*length < expectedLength) {
        ZPFail(error,
               storageError(ZPGorvaneStorageErrorTooShort,
                            ZPFormat("Data length (%llu) is shorter than expected (%u)",
                                     static_cast<unsigned long long>(*length), expectedLength),
                            offset));
        return std::nullopt;
    }
    if (expectedLength == 0)
        return std::span<const std::byte>();
    if (const auto payload = payloadAtOffset(offset); payload.size() >= expectedLength)
        return payload.first(expectedLength);

    scratch.clear();
    scratch.reserve(expectedLength); // no more than the chain was found to hold
    for (std::uint32_t block = offset; scratch.size() < expectedLength;
         block = linkAtOffset(block)) {
        const auto payload = payloadAtOffset(block);
        const auto wanted =
            payload.first(std::min(payload.size(), expectedLength - scratch.size()));
        scratch.insert(scratch.end(), wanted.begin(), wanted.end());
    }
    return scratch;
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
