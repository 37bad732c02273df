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

/// Free bytes side by side; to copy fewer costs less than to pass over them.
constexpr std::size_t kLeastGap = 256;

bool isWithin(const void *block, const std::byte *begin, const std::byte *end) {
    const std::less<const void *> isBefore;
    return !isBefore(block, begin) && isBefore(block, end);
}

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

std::size_t ZPLuaHeap::sizeOfClass(std::size_t index) {
    constexpr std::size_t kSmallClasses = kLargestSmall / kAlignment;
    if (index < kSmallClasses)
        return (index + 1) * kAlignment;
    const std::size_t quarters = index - kSmallClasses;
    return (kLargestSmall << quarters / 4) / 4 * (5 + quarters % 4);
}

bool ZPLuaHeap::Arena::beginChunk(std::size_t size) {
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

void *ZPLuaHeap::Arena::takeFree(std::size_t index) {
    FreeBlock *block = _hasFree ? _free[index] : nullptr;
    if (block != nullptr)
        _free[index] = block->next;
    return block;
}

void *ZPLuaHeap::Arena::cut(std::size_t size) {
    if (_position.chunkCount == 0 ||
        size > _chunks[_position.chunkCount - 1].size - _position.offset)
        if (!beginChunk(size))
            return nullptr;
    void *block = _chunks[_position.chunkCount - 1].bytes.get() + _position.offset;
    _position.offset += size;
    _position.taken += size;
    return block;
}

void ZPLuaHeap::Arena::giveBack(void *block, std::size_t index) {
    _free[index] = new (block) FreeBlock{_free[index]};
    _hasFree = true;
}

std::size_t ZPLuaHeap::Arena::keptSizeOf(std::size_t chunk) const {
    return chunk + 1 == _kept.chunkCount ? _kept.offset : _chunks[chunk].size;
}

std::vector<std::span<std::byte>> ZPLuaHeap::Arena::gaps() const {
    std::vector<std::span<std::byte>> blocks, gaps;
    for (std::size_t index = 0; index < _free.size(); ++index)
        for (FreeBlock *block = _free[index]; block != nullptr; block = block->next)
            blocks.emplace_back(reinterpret_cast<std::byte *>(block), sizeOfClass(index));
    std::ranges::sort(blocks, std::less<>(), [](const auto &block) { return block.data(); });
    for (const std::span<std::byte> block : blocks) {
        if (!gaps.empty() && gaps.back().data() + gaps.back().size() == block.data())
            gaps.back() = {gaps.back().data(), gaps.back().size() + block.size()};
        else
            gaps.push_back(block);
    }
    std::erase_if(gaps, [](const auto &gap) { return gap.size() < kLeastGap; });
    return gaps;
}

void ZPLuaHeap::Arena::keep() {
    _kept = _position;
    const std::vector<std::span<std::byte>> passedOver = gaps();
    for (std::size_t chunk = 0; chunk < _kept.chunkCount; ++chunk) {
        std::byte *from = _chunks[chunk].bytes.get(), *const end = from + keptSizeOf(chunk);
        for (const std::span<std::byte> gap : passedOver) {
            if (!isWithin(gap.data(), from, end))
                continue;
            _keptRanges.emplace_back(from, gap.data());
            from = gap.data() + gap.size();
        }
        _keptRanges.emplace_back(from, end);
    }
    for (const std::span<std::byte> range : _keptRanges)
        _keptBytes.insert(_keptBytes.end(), range.begin(), range.end());
    _free = {};
}

void ZPLuaHeap::Arena::restore() {
    const std::byte *from = _keptBytes.data();
    for (const std::span<std::byte> range : _keptRanges) {
        std::memcpy(range.data(), from, range.size());
        from += range.size();
    }
    if (_hasFree)
        _free = {};
    _hasFree = false;
    _position = _kept;
    _chunks.resize(std::min(_chunks.size(), _kept.chunkCount + 1));
    if (_chunks.size() > _kept.chunkCount && _chunks.back().size > kLargestSpareChunk)
        _chunks.pop_back();
}

std::size_t ZPLuaHeap::Arena::size() const {
    std::size_t size = 0;
    for (const Chunk &chunk : _chunks)
        size += chunk.size;
    return size;
}

std::uint64_t ZPLuaHeap::Arena::placeOf(const void *block) const {
    std::uint64_t start = 0;
    for (const Chunk &chunk : _chunks) {
        const std::byte *begin = chunk.bytes.get();
        if (isWithin(block, begin, begin + chunk.size))
            return start +
                   static_cast<std::uint64_t>(static_cast<const std::byte *>(block) - begin) + 1;
        start += chunk.size;
    }
    return 0;
}

bool ZPLuaHeap::Arena::isKept(const void *block) const {
    return std::ranges::any_of(_keptRanges, [&](const std::span<std::byte> range) {
        return isWithin(block, range.data(), range.data() + range.size());
    });
}

void *ZPLuaHeap::take(std::size_t size, bool isFixed) {
    // What is fixed once it is kept must not be in use for anything else by then.
    Arena &arena = isFixed && !_isKept ? _fixed : _open;
    const SizeClass sizeClass = classOf(size);
    if (void *block = arena.takeFree(sizeClass.index))
        return block;
    // Blocks of many different sizes, each given back, would be memory without end.
    const std::size_t taken = _fixed.taken() + _open.taken();
    if (sizeClass.size > 2 * _mostUsed - std::min(2 * _mostUsed, taken)) {
        _refusal = Refusal::limit;
        return nullptr;
    }
    void *block = arena.cut(sizeClass.size);
    if (block == nullptr)
        _refusal = Refusal::machine;
    return block;
}

void ZPLuaHeap::giveBack(void *block, std::size_t size) {
    const std::size_t index = classOf(size).index;
    if (_isKept && _fixed.isKept(block))
        _isFixedChanged = true; // it is not used again before `restore`
    else if (!_isKept && _fixed.placeOf(block) != 0)
        _fixed.giveBack(block, index);
    else {
        // Strings hang on each other, by way of a table that has moved when it has grown.
        _isFixedChanged = _isFixedChanged || _open.isKept(block);
        _open.giveBack(block, index);
    }
}

void *ZPLuaHeap::allocate(void *block, std::size_t oldSize, std::size_t newSize, bool isFixed) {
    if (block == nullptr)
        oldSize = 0;
    if (newSize > oldSize &&
        (newSize > kMostBlock || _used > _mostUsed || newSize - oldSize > _mostUsed - _used)) {
        _refusal = Refusal::limit;
        return nullptr;
    }
    void *moved = block;
    if (newSize == 0)
        moved = nullptr;
    else if (oldSize == 0 || classOf(oldSize).index != classOf(newSize).index)
        moved = take(newSize, isFixed);
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
    _used += newSize;
    _used -= oldSize;
    return moved;
}

void ZPLuaHeap::keep() {
    _fixed.keep();
    _open.keep();
    _keptUsed = _used;
    _isKept = true;
    _isFixedChanged = false;
}

void ZPLuaHeap::restore() {
    _open.restore();
    if (_isFixedChanged)
        _fixed.restore();
    _isFixedChanged = false;
    _used = _keptUsed;
}

std::uint64_t ZPLuaHeap::placeOf(const void *block) const {
    if (const std::uint64_t place = _fixed.placeOf(block))
        return place;
    const std::uint64_t place = _open.placeOf(block);
    return place == 0 ? 0 : _fixed.size() + place;
}
