#pragma once

#include "archive/ZPGorvaneBlockStorage.h"
#include "io/ZPLargeArray.h"

/// Who uses each block of an archive, filled while chains are followed: 4 bytes a block that an
/// offset can name, and memory only where blocks are used.
class ZPGorvaneBlockMap {
  public:
    /// Who uses a block: nobody, the header, the free chain, a directory, or the file with this
    /// number among the entries of the tree.
    enum Owner : std::uint32_t { nobody, header, freeChain, directory, firstFile };

    explicit ZPGorvaneBlockMap(const ZPGorvaneBlockStorage &storage);

    std::uint32_t blockSize() const { return _blockSize; }
    /// End of the blocks that both the file and its header have, of the last one the link at least.
    std::uint64_t end() const { return _end; }
    /// How much of a block's payload the file has.
    std::uint64_t payloadAtOffset(std::uint64_t offset) const {
        return std::min<std::uint64_t>(_blockSize, _bytes.size() - offset) -
               ZPGorvaneLayout::kLinkSize;
    }

    /// Why an offset is none of a block that a chain may use; empty when it is.
    [[nodiscard]] std::string faultOfOffset(std::uint64_t offset) const;
    /// Of a block, by its sound offset.
    std::uint32_t linkAtOffset(std::uint64_t offset) const { return wordAtOffset(offset); }
    /// Little-endian, of any bytes that the file has.
    std::uint32_t wordAtOffset(std::uint64_t offset) const {
        const std::byte *word = _bytes.data() + offset;
        std::uint32_t link = 0;
        for (unsigned index = 0; index < 4; ++index)
            link |= std::to_integer<std::uint32_t>(word[index]) << 8 * index;
        return link;
    }
    /// Of a block that a chain may use.
    std::uint32_t &ownerAtOffset(std::uint64_t offset) {
        return _owners.data()[offset / _blockSize];
    }
    bool isUsed(std::uint64_t offset) const {
        return offset / _blockSize < _owners.size() &&
               _owners.data()[offset / _blockSize] != nobody;
    }
    /// Starts loading what a chain's first step will want.
    [[gnu::always_inline]] inline void prefetch(std::uint32_t offset) const {
        if (offset < end() && offset < ZPGorvaneLayout::kFreeBit) {
            __builtin_prefetch(_bytes.data() + offset);
            __builtin_prefetch(&_owners.data()[offset / _blockSize]);
        }
    }

  private:
    std::span<const std::byte> _bytes;
    std::uint32_t _blockSize;
    std::uint64_t _end;
    ZPLargeArray<std::uint32_t> _owners;
};
