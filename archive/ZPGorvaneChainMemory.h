#pragma once

#include "io/ZPLargeArray.h"

#include <atomic>
#include <cstdint>
#include <mutex>

/// What was found out about the blocks of damaged chains, one word a block, so that a chain that
/// leads into them need not be followed again. Without it, thousands of files that share one long
/// chain would cost the length of that chain each.
///
/// A sound archive never makes one. A chain that was found damaged stays so until its file is
/// opened again. Safe from several threads; who finds nothing follows the chain.
class ZPGorvaneChainMemory {
  public:
    /// Nothing is known of the block.
    static constexpr std::uint32_t kUnknown = 0;
    /// The chain is sound from the block to its end.
    static constexpr std::uint32_t kSound = 1;
    // Any other word is the offset of a block that the chain leads to, with a fault there or in its
    // link; a block's own offset says that the block is part of a loop.

    /// Makes room for so many blocks; where there is not enough memory, nothing is remembered.
    void makeRoom(std::size_t blockCount) {
        const std::lock_guard guard(_lock);
        if (_isReady.load(std::memory_order_relaxed))
            return;
        _words = ZPLargeArray<std::uint32_t>(blockCount);
        _isReady.store(!_words.empty(), std::memory_order_release);
    }
    /// Must not run beside anything else.
    void forget() {
        _isReady = false;
        _words = {};
    }
    bool hasRoom() const { return _isReady.load(std::memory_order_acquire); }

    // Only where there is room. By the compilers' own functions, since not every standard library
    // has std::atomic_ref.
    std::uint32_t wordOfBlock(std::size_t number) const {
        return number < _words.size() ? __atomic_load_n(&_words.data()[number], __ATOMIC_RELAXED)
                                      : kUnknown;
    }
    void noteBlock(std::size_t number, std::uint32_t word) {
        if (number < _words.size())
            __atomic_store_n(&_words.data()[number], word, __ATOMIC_RELAXED);
    }

  private:
    std::mutex _lock;
    std::atomic<bool> _isReady = false;
    ZPLargeArray<std::uint32_t> _words;
};
