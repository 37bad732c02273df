#pragma once

#include <cstdint>
#include <span>

/// One symbol's code as deflate writes it: `bits` with the first bit lowest.
struct WQHuffmanCode {
    std::uint16_t bits = 0;
    std::uint8_t length = 0;
};

/// Makes the canonical prefix code of least total length, no code longer than `maximumLength` (at
/// most 15), for symbols that occur so often. A symbol that does not occur gets no code; one that
/// occurs alone gets a code of one bit. `codes` is as long as `frequencies`. There must be no more
/// than 2^maximumLength symbols.
void WQMakeHuffmanCodes(std::span<const std::uint32_t> frequencies, unsigned maximumLength,
                        std::span<WQHuffmanCode> codes);
