#include "map/png/WQDeflateBlock.h"

#include "map/png/WQHuffmanCode.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr unsigned kEndOfBlock = 256;
constexpr unsigned kLongestMatch = WQDeflateBlock::kLongestMatch;
// The greatest code lengths. RFC 1951 allows 15 bits, and 7 for the code of the code lengths
// (3.2.7); four literals of 12 and what is left of a byte fit into one 64-bit write.
constexpr unsigned kLongestLiteralCode = 12;
constexpr unsigned kLongestDistanceCode = 15;
constexpr unsigned kLongestLengthCode = 7;

/// The symbol for a match length or a distance, and the extra bits that complete it (RFC 1951,
/// 3.2.5).
struct Symbol {
    std::uint16_t number = 0;
    std::uint8_t extraLength = 0;
    std::uint16_t extra = 0;
};

/// Symbols 257 to 285 by match length (first table of RFC 1951, 3.2.5): from length 11 on, four
/// symbols to each power of two, and one of its own for 258.
constexpr std::array<Symbol, kLongestMatch + 1> kLengthSymbolTable = [] {
    std::array<Symbol, kLongestMatch + 1> table{};
    for (unsigned length = 3; length < kLongestMatch; ++length) {
        const unsigned value = length - 3;
        const unsigned extraLength =
            value < 8 ? 0u : static_cast<unsigned>(std::bit_width(value)) - 3;
        const unsigned number = 257 + 4 * extraLength + (value >> extraLength);
        table[length] = {static_cast<std::uint16_t>(number), static_cast<std::uint8_t>(extraLength),
                         static_cast<std::uint16_t>(value & ((1u << extraLength) - 1))};
    }
    table[kLongestMatch] = {285, 0, 0};
    return table;
}();

/// Symbols 0 to 29 (second table of RFC 1951, 3.2.5): two to each power of two.
Symbol distanceSymbol(unsigned distance) {
    const unsigned value = distance - 1;
    const unsigned extraLength = value < 4 ? 0u : static_cast<unsigned>(std::bit_width(value)) - 2;
    return {static_cast<std::uint16_t>(2 * extraLength + (value >> extraLength)),
            static_cast<std::uint8_t>(extraLength),
            static_cast<std::uint16_t>(value & ((1u << extraLength) - 1))};
}

/// Calls `take` with the lengths that deflate has to split a match into, none shorter than 3, and
/// how often each comes in succession.
template <class Take>
void splitMatch(std::size_t length, const Take &take) {
    if (length > kLongestMatch + 2) {
        const std::size_t count = (length - 3) / kLongestMatch;
        take(kLongestMatch, count);
        length -= count * kLongestMatch;
    }
    if (length > kLongestMatch) {
        take(static_cast<unsigned>(length - 3), std::size_t{1});
        length = 3;
    }
    take(static_cast<unsigned>(length), std::size_t{1});
}

struct Bits {
    std::uint64_t value = 0;
    unsigned length = 0;

    void append(std::uint64_t bits, unsigned count) {
        value |= bits << length;
        length += count;
    }
    void append(const WQHuffmanCode &code) { append(code.bits, code.length); }
};

} // namespace

void WQDeflateBlock::appendMatch(std::size_t length, std::size_t distance) {
    _tokens.push_back(
        {static_cast<std::uint32_t>(length), static_cast<std::uint16_t>(distance), 0});
    std::uint32_t &distanceCount =
        _distances[distanceSymbol(static_cast<unsigned>(distance)).number];
    splitMatch(length, [&](unsigned part, std::size_t count) {
        _lengths[kLengthSymbolTable[part].number] += static_cast<std::uint32_t>(count);
        distanceCount += static_cast<std::uint32_t>(count);
    });
}

/// The codes of a block, as its tokens and its header need them.
class WQDeflateBlock::Codes {
  public:
    Codes(std::array<std::uint32_t, kLengthSymbols> lengths,
          const std::array<std::uint32_t, kDistanceSymbols> &distances) {
        lengths[kEndOfBlock] = 1;
        WQMakeHuffmanCodes(lengths, kLongestLiteralCode, _codes);
        WQMakeHuffmanCodes(distances, kLongestDistanceCode,
                           std::span(_codes).subspan(kLengthSymbols));
        for (unsigned length = kShortestMatch; length <= kLongestMatch; ++length) {
            const Symbol &symbol = kLengthSymbolTable[length];
            _matches[length].append(_codes[symbol.number]);
            _matches[length].append(symbol.extra, symbol.extraLength);
        }

        std::uint64_t bits = 0;
        for (std::size_t number = 0; number < kLengthSymbols; ++number)
            bits += std::uint64_t{lengths[number]} *
                    (_codes[number].length + (number > kEndOfBlock ? 5u : 0u));
        for (std::size_t number = 0; number < kDistanceSymbols; ++number)
            bits +=
                std::uint64_t{distances[number]} * (_codes[kLengthSymbols + number].length + 13u);
        _byteLimit = bits / 8 + 1;
    }

    const WQHuffmanCode &literal(unsigned byte) const { return _codes[byte]; }
    /// A match's length with its extra bits.
    const Bits &match(unsigned length) const { return _matches[length]; }
    Bits distance(unsigned distance) const {
        const Symbol symbol = distanceSymbol(distance);
        Bits bits;
        bits.append(_codes[kLengthSymbols + symbol.number]);
        bits.append(symbol.extra, symbol.extraLength);
        return bits;
    }
    /// Those of literals and lengths, then those of distances.
    std::span<const WQHuffmanCode> all() const { return _codes; }
    /// No fewer bytes than the tokens take.
    std::size_t byteLimit() const { return _byteLimit; }

  private:
    std::array<WQHuffmanCode, kLengthSymbols + kDistanceSymbols> _codes;
    std::array<Bits, kLongestMatch + 1> _matches;
    std::size_t _byteLimit = 0;
};

class WQDeflateBlock::Writer {
  public:
    /// Room for the header and the end, and for the last write to overshoot.
    static constexpr std::size_t kMargin = 512;

    Writer(const Codes &codes) : _codes(codes), _bytes(codes.byteLimit() + kMargin) {
        _next = _bytes.data();
    }

    void writeHeader();
    void writeTokens(const std::vector<Token> &tokens);
    ZPData end();

  private:
    static constexpr unsigned kLongestPut = 56;

    /// Up to that many bits. Eight bytes are stored at once and the position moves by those that
    /// are full.
    void put(Bits bits) {
        _pending.append(bits.value, bits.length);
        if constexpr (std::endian::native == std::endian::little) {
            std::memcpy(_next, &_pending.value, sizeof _pending.value);
        } else {
            for (unsigned index = 0; index < 8; ++index)
                _next[index] = static_cast<std::byte>(_pending.value >> 8 * index);
        }
        _next += _pending.length / 8;
        _pending.value >>= _pending.length & ~7u;
        _pending.length &= 7;
    }
    /// A row of zeros is hundreds of times the same few bits: as many as one write takes go at
    /// once.
    void putRepeatedly(Bits bits, std::size_t count) {
        if (const std::size_t copies = kLongestPut / bits.length; count >= 2 * copies) {
            Bits several;
            for (std::size_t copy = 0; copy < copies; ++copy)
                several.append(bits.value, bits.length);
            for (; count >= copies; count -= copies)
                put(several);
        }
        for (; count > 0; --count)
            put(bits);
    }
    void put(std::uint64_t bits, unsigned length) { put(Bits{bits, length}); }
    void put(const WQHuffmanCode &code) { put(code.bits, code.length); }
    Bits bitsOfLiterals(const Token &token) const;

    const Codes &_codes;
    ZPData _bytes;
    std::byte *_next;
    Bits _pending;
};

/// The header of RFC 1951, 3.2.7: the code lengths are themselves coded, and the lengths of those
/// codes come in an order that puts the rarest last. The runs that deflate offers for them are not
/// used, which costs some 100 bytes a band of 100,000.
void WQDeflateBlock::Writer::writeHeader() {
    constexpr std::array<std::uint8_t, 19> kOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                     11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::array<std::uint32_t, kOrder.size()> frequencies{};
    for (const WQHuffmanCode &code : _codes.all())
        ++frequencies[code.length];
    std::array<WQHuffmanCode, kOrder.size()> lengthCodes;
    WQMakeHuffmanCodes(frequencies, kLongestLengthCode, lengthCodes);

    put(0b100, 3);
    put(kLengthSymbols - 257, 5);
    put(kDistanceSymbols - 1, 5);
    put(kOrder.size() - 4, 4);
    for (const std::uint8_t length : kOrder)
        put(lengthCodes[length].length, 3);
    for (const WQHuffmanCode &code : _codes.all())
        put(lengthCodes[code.length]);
}

Bits WQDeflateBlock::Writer::bitsOfLiterals(const Token &token) const {
    Bits bits;
    for (unsigned index = 0; index < token.literalCount; ++index)
        bits.append(_codes.literal(token.value >> 8 * index & 0xFF));
    return bits;
}

void WQDeflateBlock::Writer::writeTokens(const std::vector<Token> &tokens) {
    for (const Token &token : tokens) {
        if (token.distance == 0) {
            put(bitsOfLiterals(token));
            continue;
        }
        const Bits distance = _codes.distance(token.distance);
        splitMatch(token.value, [&](unsigned part, std::size_t count) {
            Bits bits = _codes.match(part);
            bits.append(distance.value, distance.length);
            putRepeatedly(bits, count);
        });
    }
    put(_codes.literal(kEndOfBlock));
}

ZPData WQDeflateBlock::Writer::end() {
    put(0, 3);
    put(0, (8 - _pending.length) % 8);
    put(0xFFFF0000, 32);
    _bytes.resize(static_cast<std::size_t>(_next - _bytes.data()));
    return std::move(_bytes);
}

ZPData WQDeflateBlock::finish() {
    std::array<std::uint32_t, kLengthSymbols> lengths = _lengths;
    for (const auto &literals : _literals)
        for (std::size_t byte = 0; byte < literals.size(); ++byte)
            lengths[byte] += literals[byte];
    const Codes codes(lengths, _distances);
    Writer writer(codes);
    writer.writeHeader();
    writer.writeTokens(_tokens);
    _tokens.clear();
    _literals = {};
    _lengths = {};
    _distances = {};
    return writer.end();
}
