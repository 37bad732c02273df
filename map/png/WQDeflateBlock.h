#pragma once

#include "io/ZPData.h"

#include <array>
#include <cstdint>
#include <vector>

/// One deflate block in the making: literals and matches that its user finds, then the bits. It can
/// make one after another, and keeps its memory.
///
/// Who makes the tokens knows what the data is made of, and one token stands for as many bytes as
/// need be: a run of zeros of any length costs one token here and a few bits in the file.
class WQDeflateBlock {
  public:
    static constexpr std::size_t kWindowSize = 32768;
    static constexpr std::size_t kShortestMatch = 3;
    /// A longer one is written as several.
    static constexpr std::size_t kLongestMatch = 258;

    /// Appends `count` bytes, 1 to 4, that stand in `bytes` with the first one lowest.
    void appendLiterals(std::uint32_t bytes, unsigned count) {
        _tokens.push_back({bytes, 0, static_cast<std::uint16_t>(count)});
        for (unsigned index = 0; index < count; ++index)
            ++_literals[index][bytes >> 8 * index & 0xFF];
    }

    /// Appends `length` bytes, 3 or more, each equal to the one `distance` bytes before it; 1 to
    /// 32768.
    void appendMatch(std::size_t length, std::size_t distance);

    /// The block and an empty one after it, so that they end on a byte; what is appended next
    /// begins another block. Deflate bits run from the lowest of a byte up:
    ///
    ///     3 bits 0, 0, 1   not the last block, dynamic codes
    ///     code lengths, tokens, end of block
    ///     3 bits 0, 0, 0   not the last block, stored; bits up to the end of the byte
    ///     00 00 FF FF      no bytes
    ZPData finish();

  private:
    static constexpr std::size_t kLengthSymbols = 286;
    static constexpr std::size_t kDistanceSymbols = 30;

    struct Token {
        /// Literal bytes, or a match's length.
        std::uint32_t value;
        /// 0 for literals.
        std::uint16_t distance;
        std::uint16_t literalCount;
    };
    class Codes;
    class Writer;

    std::vector<Token> _tokens;
    /// A table for each place in a token, so that equal bytes do not wait for one another's counts.
    std::array<std::array<std::uint32_t, 256>, 4> _literals{};
    std::array<std::uint32_t, kLengthSymbols> _lengths{};
    std::array<std::uint32_t, kDistanceSymbols> _distances{};
};
