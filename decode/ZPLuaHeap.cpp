#include "decode/ZPLuaHeap.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t kFirstChunk = 64 << 10, kLargestSpareChunk = 256 << 10;
constexpr std::size_t kMostDoublings = 4;
constexpr std::size_t kAlignment = 16;
/// Up to here there is a class for every sixteen bytes, then four for each doubling.
constexpr std::size_t kLargestSmall = 512;
/// More than any class holds.
constexpr std::size_t kMostBlock = std::size_t{1} << 40;

} // namespace

ZPLuaHeap::SizeClass ZPLuaHeap::classOf(std::size_t size) {
    constexpr std::size_t kSmallClasses = kLargestSmall / kAlignment;
    if (size <= kLargestSmall) {
        const std::size_t index = (size - 1) / kAlignment;
        return {index, (index + 1) * kAlignment};
    }
    const auto doubling = static_cast<unsigned>(std::bit_width(size - 1)) - 1;
    const std::size_t base = std::size_t{1} << doubling, step = base / 4;
    const std::size_t quarter = (size - 1 - base) / step;
    const auto firstDoubling = static_cast<unsigned>(std::bit_width(kLargestSmall)) - 1;
    return {kSmallClasses + (doubling - firstDoubling) * 4 + quarter, base + (quarter + 1) * step};
}

bool ZPLuaHeap::beginChunk(std::size_t size) {
    // A chunk left from before is used where a new one would be as large, so that what a script
    // meets does not depend on what came before it.
    const std::size_t place = _position.chunkCount;
    const std::size_t wanted = std::max(size, kFirstChunk << std::min(place, kMostDoublings));
    if (place >= _chunks.size() || _chunks[place].size != wanted) {
        _chunks.resize(place);
        std::unique_ptr<std::byte[]> bytes(new (std::nothrow) std::byte[wanted]);
        if (bytes == nullptr)
            return false;
        _chunks.push_back({std::move(bytes), wanted});
    }
    ++_position.chunkCount;
    _position.offset = 0;
    return true;
}

void *ZPLuaHeap::take(std::size_t size) {
    const SizeClass sizeClass = classOf(size);
    FreeBlock *&first = _position.free[sizeClass.index];
    if (first != nullptr) {
        FreeBlock *block = first;
        first = block->next;
        return block;
    }
    // Blocks of many different sizes, each given back, would be memory without end.
    if (sizeClass.size > 2 * _mostUsed - std::min(2 * _mostUsed, _position.taken)) {
        _refusal = Refusal::limit;
        return nullptr;
    }
    if (_position.chunkCount == 0 ||
        sizeClass.size > _chunks[_position.chunkCount - 1].size - _position.offset)
        if (!beginChunk(sizeClass.size)) {
            _refusal = Refusal::machine;
            return nullptr;
        }
    void *block = _chunks[_position.chunkCount - 1].bytes.get() + _position.offset;
    _position.offset += sizeClass.size;
    _position.taken += sizeClass.size;
    return block;
}

void ZPLuaHeap::giveBack(void *block, std::size_t size) {
    FreeBlock *&first = _position.free[classOf(size).index];
    first = new (block) FreeBlock{first};
}

void *ZPLuaHeap::allocate(void *block, std::size_t oldSize, std::size_t newSize) {
    if (block == nullptr)
        oldSize = 0;
    if (newSize > oldSize && (newSize > kMostBlock || _position.used > _mostUsed ||
                              newSize - oldSize > _mostUsed - _position.used)) {
        _refusal = Refusal::limit;
        return nullptr;
    }
    void *moved = block;
    if (newSize == 0)
        moved = nullptr;
    else if (oldSize == 0 || classOf(oldSize).index != classOf(newSize).index)
        moved = take(newSize);
    if (newSize > 0 && moved == nullptr) {
        if (newSize > oldSize)
            return nullptr;
        moved = block; // Lua counts on shrinking
    }
    if (block != nullptr && moved != block) {
        if (moved != nullptr)
            std::memcpy(moved, block, std::min(oldSize, newSize));
        giveBack(block, oldSize);
    }
    _position.used += newSize;
    _position.used -= oldSize;
    return moved;
}

void ZPLuaHeap::keep() {
    _kept = _position;
    _keptBytes.clear();
    for (std::size_t place = 0; place < _kept.chunkCount; ++place) {
        const Chunk &chunk = _chunks[place];
        const bool isLast = place + 1 == _kept.chunkCount;
        _keptBytes.insert(_keptBytes.end(), chunk.bytes.get(),
                          chunk.bytes.get() + (isLast ? _kept.offset : chunk.size));
    }
}

void ZPLuaHeap::restore() {
    const std::byte *from = _keptBytes.data();
    for (std::size_t place = 0; place < _kept.chunkCount; ++place) {
        const bool isLast = place + 1 == _kept.chunkCount;
        const std::size_t size = isLast ? _kept.offset : _chunks[place].size;
        std::memcpy(_chunks[place].bytes.get(), from, size);
        from += size;
    }
    _position = _kept;
    _chunks.resize(std::min(_chunks.size(), _kept.chunkCount + 1));
    if (_chunks.size() > _kept.chunkCount && _chunks.back().size > kLargestSpareChunk)
        _chunks.pop_back();
}

std::uint64_t ZPLuaHeap::placeOf(const void *block) const {
    std::uint64_t start = 0;
    const auto *at = static_cast<const std::byte *>(block);
    for (const Chunk &chunk : _chunks) {
        const std::less<> isBefore;
        if (!isBefore(at, chunk.bytes.get()) && isBefore(at, chunk.bytes.get() + chunk.size))
            return start + static_cast<std::uint64_t>(at - chunk.bytes.get()) + 1;
        start += chunk.size;
    }
    return 0;
}
