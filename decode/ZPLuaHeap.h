#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

/// The memory of one Lua interpreter: bounded, and able to go back, all of it at once, to how it
/// was. So whatever a script does with one record, the next one finds the interpreter as it was
/// when the script was loaded, at the price of copying what it may have changed, some ten
/// kilobytes.
///
///     chunk 0             chunk 1       chunk 2 ...
///     | kept  | since  |  | since    |
///
/// Blocks are cut from chunks one after another, and those given back wait in a list for others of
/// their size; nothing is given back to the system before `restore`. What is fixed, half of what is
/// kept, lies in chunks of its own, which are copied only where it did change.
class ZPLuaHeap {
  public:
    enum class Refusal { none, limit, machine };

    /// As Lua's allocation functions do: grows, shrinks, makes (`block` null) or gives back
    /// (`newSize` 0). Null when there is no room, and `refusal` says why; never when shrinking.
    /// `isFixed`, of what is made: once kept, it changes only where garbage is collected or other
    /// kept blocks move.
    [[nodiscard]] void *allocate(void *block, std::size_t oldSize, std::size_t newSize,
                                 bool isFixed);
    Refusal refusal() const { return _refusal; }
    /// To be called when garbage was, or may have been, collected.
    void noteCollection() { _isFixedChanged = true; }

    /// How much may be in use at once, in bytes, what is kept included.
    void setMostUsed(std::size_t mostUsed) {
        _mostUsed = mostUsed;
        _refusal = Refusal::none;
    }
    std::size_t used() const { return _used; }

    /// From now on `restore` leads back here. For once.
    void keep();
    void restore();
    std::size_t kept() const { return _keptUsed; }

    /// Where a block lies, as a number that is the same in every run that allocates the same; 0 for
    /// what is not of this heap.
    std::uint64_t placeOf(const void *block) const;

  private:
    static constexpr std::size_t kClassCount = 160;
    struct FreeBlock {
        FreeBlock *next;
    };
    struct Chunk {
        std::unique_ptr<std::byte[]> bytes;
        std::size_t size = 0;
    };
    struct SizeClass {
        std::size_t index, size;
    };
    static SizeClass classOf(std::size_t size);
    static std::size_t sizeOfClass(std::size_t index);

    class Arena {
      public:
        /// A block that was given back; null where there is none of this size.
        void *takeFree(std::size_t index);
        /// A new one; null when the machine has no more memory.
        void *cut(std::size_t size);
        void giveBack(void *block, std::size_t index);

        void keep();
        void restore();

        /// What was cut, and what all chunks have, in bytes.
        std::size_t taken() const { return _position.taken; }
        std::size_t size() const;
        /// 0 for what does not lie here.
        std::uint64_t placeOf(const void *block) const;
        bool isKept(const void *block) const;

      private:
        struct Position {
            std::size_t taken = 0;
            /// How many chunks are begun, and how much of the last one is cut.
            std::size_t chunkCount = 0, offset = 0;
        };
        bool beginChunk(std::size_t size);
        std::size_t keptSizeOf(std::size_t chunk) const;
        std::vector<std::span<std::byte>> gaps() const;

        std::vector<Chunk> _chunks;
        Position _position, _kept;
        std::array<FreeBlock *, kClassCount> _free{};
        bool _hasFree = false;
        /// What was in use when it was kept, and its bytes. What was free then is not used again.
        std::vector<std::span<std::byte>> _keptRanges;
        std::vector<std::byte> _keptBytes;
    };

    void *take(std::size_t size, bool isFixed);
    void giveBack(void *block, std::size_t size);

    std::size_t _mostUsed = 0, _used = 0, _keptUsed = 0;
    Refusal _refusal = Refusal::none;
    bool _isKept = false, _isFixedChanged = false;
    Arena _fixed, _open;
};
