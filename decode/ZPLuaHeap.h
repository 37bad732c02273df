#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// The memory of one Lua interpreter: bounded, and able to go back, all of it at once, to how it
/// was. So whatever a script does with one record, the next one finds the interpreter as it was
/// when the script was loaded, at the price of copying what it then had, some forty kilobytes.
///
///     chunk 0             chunk 1       chunk 2 ...
///     | kept  | since  |  | since    |
///
/// Blocks are cut from chunks one after another, and those given back wait in a list for others of
/// their size; nothing is given back to the system before `restore`.
class ZPLuaHeap {
  public:
    enum class Refusal { none, limit, machine };

    /// As Lua's allocation functions do: grows, shrinks, makes (`block` null) or gives back
    /// (`newSize` 0). Null when there is no room, and `refusal` says why; never when shrinking.
    [[nodiscard]] void *allocate(void *block, std::size_t oldSize, std::size_t newSize);
    Refusal refusal() const { return _refusal; }

    /// How much may be in use at once, in bytes, what is kept included.
    void setMostUsed(std::size_t mostUsed) {
        _mostUsed = mostUsed;
        _refusal = Refusal::none;
    }
    std::size_t used() const { return _position.used; }

    /// From now on `restore` leads back here.
    void keep();
    void restore();
    std::size_t kept() const { return _kept.used; }

    /// Where a block lies, as a number that is the same in every run that allocates the same.
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
    /// All that tells used memory from free.
    struct Position {
        /// What is in use, and what was cut from the chunks, in bytes.
        std::size_t used = 0, taken = 0;
        /// How many chunks are begun, and how much of the last one is cut.
        std::size_t chunkCount = 0, offset = 0;
        std::array<FreeBlock *, kClassCount> free{};
    };
    struct SizeClass {
        std::size_t index, size;
    };

    static SizeClass classOf(std::size_t size);
    void *take(std::size_t size);
    void giveBack(void *block, std::size_t size);
    bool beginChunk(std::size_t size);

    std::size_t _mostUsed = 0;
    Refusal _refusal = Refusal::none;
    std::vector<Chunk> _chunks;
    Position _position, _kept;
    /// The bytes of the chunks that `_kept` had begun.
    std::vector<std::byte> _keptBytes;
};
