// Diagnostics of a block file: what its header and its free blocks say, held against the file.

#include "archive/ZPGorvaneBlockStorage.h"

#include "io/ZPSystemLog.h"

#include <algorithm>
#include <vector>

using namespace ZPGorvaneLayout;

bool ZPGorvaneBlockStorage::check() const {
    return checkHeader() && checkFreeBlockChain();
}

bool ZPGorvaneBlockStorage::checkHeader() const {
    bool isSound = true;
    if (_blockSize != 256 && _blockSize != 1024) {
        ZPLog("Error: Unrecognized block size: %u", _blockSize);
        isSound = false;
    }
    if (_fileSize % _blockSize != 0) {
        ZPLog("Error: File size is not a multiple of the block size (%d bytes)",
              static_cast<int>(_blockSize));
        isSound = false;
    }
    if (_fileSize % kFileSizeUnit != 0) {
        ZPLog("Error: File size (%u bytes) is not a multiple of 1,048,576 bytes", _fileSize);
        isSound = false;
    }
    return isSound;
}

bool ZPGorvaneBlockStorage::checkFreeBlockChain() const {
    const std::uint32_t lastValid = _fileSize - _blockSize;
    ZPLog("firstBlock: %08x, lastBlock: %08x", _blockSize, lastValid);

    bool isSound = true;
    const auto bytes = fileBytes();
    // By block; what lies outside ends the walk.
    std::vector<bool> isVisited(bytes.size() / _blockSize + 1);
    std::size_t visitedCount = 0;
    const auto isRepeat = [&](std::uint32_t offset) {
        const std::size_t number = offset / _blockSize;
        return offset % _blockSize == 0 && number < isVisited.size() && isVisited[number];
    };
    try {
        for (std::uint32_t offset = _firstFreeBlock; offset != 0;) {
            const bool isRepeated = isRepeat(offset);
            const bool isOutside = offset < _blockSize || offset > lastValid;
            if (isRepeated || isOutside || offset % _blockSize != 0) {
                if (isRepeated)
                    ZPLog("Error: Free block chain contains a loop");
                else if (isOutside)
                    ZPLog("Error: Free block %08x does not fall within data area of file", offset);
                else
                    ZPLog("Error: Free block %08x does not begin on a block boundary", offset);
                isSound = false;
                break;
            }
            const std::uint32_t link = linkAtOffset(bytes, offset);
            const std::uint32_t next = link & ~kFreeBit;
            if ((link & kFreeBit) == 0) {
                ZPLog("Error: Free block %08x is not marked free", offset);
                isSound = false;
            }
            if (next == 0 && offset != _lastFreeBlock) {
                ZPLog("Error: Free block chain does not end at block recorded in header");
                isSound = false;
            }
            isVisited[offset / _blockSize] = true; // the file has it: its link was read
            ++visitedCount;
            ZPLog("nextOffset: %08x, next free block: %08x", link, next);
            offset = next;
        }
    } catch (const ZPRangeException &exception) {
        ZPLog("Caught exception: %s", exception.what());
        return false;
    }

    if (visitedCount != _freeBlockCount) {
        ZPLog("Error: Free block count recorded in header (%u) does not match actual free block "
              "count (%zu)",
              _freeBlockCount, visitedCount);
        isSound = false;
    }
    ZPLog("header freeBlockCount: %u, chain freeBlockCount: %zu", _freeBlockCount, visitedCount);
    return isSound;
}

void ZPGorvaneBlockStorage::searchForFirstFreeBlock() const {
    const auto bytes = fileBytes();
    std::vector<std::uint32_t> freeBlocks, referenced;
    try {
        for (std::uint64_t offset = _blockSize; offset < _fileSize; offset += _blockSize) {
            const std::uint32_t link = linkAtOffset(bytes, offset);
            if ((link & kFreeBit) == 0)
                continue;
            freeBlocks.push_back(static_cast<std::uint32_t>(offset));
            referenced.push_back(link & ~kFreeBit);
        }
    } catch (const ZPRangeException &exception) {
        ZPLog("Caught exception: %s", exception.what());
    }

    std::ranges::sort(referenced);
    referenced.erase(std::ranges::unique(referenced).begin(), referenced.end());
    std::vector<std::uint32_t> unreferenced;
    std::ranges::set_difference(freeBlocks, referenced, std::back_inserter(unreferenced));
    ZPLog("             free block count: %zu", freeBlocks.size());
    ZPLog("  referenced free block count: %zu", referenced.size());
    ZPLog("unreferenced free block count: %zu", unreferenced.size());
    if (unreferenced.size() <= 9)
        for (const std::uint32_t offset : unreferenced)
            ZPLog("... %08x\n", offset);
}

void ZPGorvaneBlockStorage::logHeaderInfo() const {
    const auto asSigned = [](std::uint32_t value) { return static_cast<int>(value); };
    ZPLog("version:        %u", _version);
    ZPLog("blockSize:      %08x (%u)", _blockSize, _blockSize);
    ZPLog("fileSize:       %08x (%d)", _fileSize, asSigned(_fileSize));
    ZPLog("contentType:    %08x", _contentType);
    ZPLog("contentSubtype: %08x", _contentSubtype);
    ZPLog("firstFreeBlock: %08x (%d)", _firstFreeBlock, asSigned(_firstFreeBlock));
    ZPLog("lastFreeBlock:  %08x (%d)", _lastFreeBlock, asSigned(_lastFreeBlock));
    ZPLog("freeBlockCount: %08x (%d)", _freeBlockCount, asSigned(_freeBlockCount));
    ZPLog("rootOffset:     %08x (%u)", _rootOffset, _rootOffset);
    for (std::size_t index = 0; index < _unknown2To8.size(); ++index) {
        const std::uint32_t word = _unknown2To8[index];
        ZPLog("u%zu: %08x (%d) %f", index + 2, word, asSigned(word),
              static_cast<double>(std::bit_cast<float>(word)));
    }
}

std::string ZPGorvaneBlockStorage::description() const {
    return ZPFormat("<ZPGorvaneBlockStorage: %p> version: %u, blockSize: %4u, firstFreeBlock: "
                    "%08x, lastFreeBlock: %08x, rootOffset: %08x",
                    static_cast<const void *>(this), _version, _blockSize, _firstFreeBlock,
                    _lastFreeBlock, _rootOffset);
}
