#pragma once

#include "io/ZPData.h"

#include <array>
#include <cstdint>
#include <vector>

/// One block of deflate (RFC 1951) in the making: literals and matches that its user finds, then
/// the bits. It can make one after another, and keeps its memory.
///
/// The user finds the matches, since it knows what the data is made of. One match may cover any
/// number of bytes: a run of zeros of any length costs one token here and a few bits in the file.
class WQDeflateBlock {
  public:
    /// How far back a match may lie, in bytes.
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

    /// Appends `length` bytes, 3 or more and fewer than 2^32, each equal to the one `distance`
    /// bytes before it; 1 to 32768.
    void appendMatch(std::size_t length, std::size_t distance);

    /// The block and an empty one after it, so that they end on a byte; what is appended next
    /// begins another block. Deflate bits run from the lowest of a byte up (RFC 1951, 3.1.1 and
    /// 3.2.3 to 3.2.7):
    ///
    ///     3 bits 0, 0, 1   not the last block, dynamic codes
    ///     code lengths, tokens, end of block
    ///     3 bits 0, 0, 0   not the last block, stored; bits up to the end of the byte
    ///     00 00 FF FF      no bytes
    [[nodiscard]] ZPData finish();

  private:
    // The alphabets of RFC 1951, 3.2.5: literals, end of block and lengths in one; distances.
    static constexpr std::size_t kLengthSymbols = 286;
    static constexpr std::size_t kDistanceSymbols = 30;

    struct Token {
        /// Literal bytes, or a match's length.
        std::uint32_t value;
        /// 0 for literals; the window's size, its greatest, fits into 16 bits.
        std::uint16_t distance;
        std::uint16_t literalCount;
    };
    class Codes;
    class Writer;

    std::vector<Token> _tokens;
    /// One table for each byte of a token: with a single one, equal bytes in succession would each
    /// wait until the count of the one before is stored.
    std::array<std::array<std::uint32_t, 256>, 4> _literals{};
    std::array<std::uint32_t, kLengthSymbols> _lengths{};
    std::array<std::uint32_t, kDistanceSymbols> _distances{};
};
