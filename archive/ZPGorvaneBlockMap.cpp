#include "archive/ZPGorvaneBlockMap.h"

#include "io/ZPSystemLog.h"

#include <algorithm>

namespace {

/// How many blocks begin within the size that the header has, and have their link in the file.
std::uint64_t blocksWithin(std::uint64_t fileSize, std::uint64_t size, std::uint64_t blockSize) {
    const auto upTo = [=](std::uint64_t bytes, std::uint64_t least) {
        return bytes / blockSize + (bytes % blockSize >= least);
    };
    return std::min(upTo(fileSize, 1), upTo(size, ZPGorvaneLayout::kLinkSize));
}

} // namespace

ZPGorvaneBlockMap::ZPGorvaneBlockMap(const ZPGorvaneBlockStorage &storage)
    : _bytes(storage.fileHandle()->bytes()), _blockSize(storage.blockSize()),
      _end(blocksWithin(storage.fileSize(), _bytes.size(), _blockSize) * _blockSize),
      _owners(ZPLargeArray<std::uint32_t>::allocate(
          std::min<std::uint64_t>(_end, ZPGorvaneLayout::kFreeBit) / _blockSize + 1)) {
    // With small blocks the header takes more than the first one.
    const std::uint64_t headerEnd = ZPGorvaneLayout::headerEnd(storage.version());
    for (std::uint64_t offset = 0; offset < std::min(headerEnd, end()); offset += _blockSize)
        ownerAtOffset(offset) = header;
}

std::string ZPGorvaneBlockMap::faultOfOffset(std::uint64_t offset) const {
    if (offset % _blockSize != 0)
        return ZPFormat("%08llx does not begin on a block boundary",
                        static_cast<unsigned long long>(offset));
    if (offset < _blockSize || offset >= end())
        return ZPFormat("%08llx does not fall within the blocks (%08x - %08llx)",
                        static_cast<unsigned long long>(offset), _blockSize,
                        static_cast<unsigned long long>(end()));
    // An offset with the top bit is the link of a free block.
    if (offset >= ZPGorvaneLayout::kFreeBit)
        return ZPFormat("%08llx lies past 2 GiB, where no chain can go",
                        static_cast<unsigned long long>(offset));
    return {};
}
