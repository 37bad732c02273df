// Digests and checksums for machines to which the libraries do not come.

#include "io/ZPChecksum.h"
#include "io/ZPSHA1.h"
#include "io/ZPSHA256.h"

#include <algorithm>
#include <bit>

namespace {

std::uint32_t bigWord(const std::byte *bytes) {
    std::uint32_t word = 0;
    for (unsigned index = 0; index < 4; ++index)
        word = word << 8 | std::to_integer<std::uint32_t>(bytes[index]);
    return word;
}

/// Both digests take blocks of 64 bytes, padded with one bit, zeros and the message's length in
/// bits as a big-endian u64.
template <std::size_t stateSize, class Mix>
std::array<std::byte, 4 * stateSize> digestOf(std::span<const std::byte> data,
                                              std::array<std::uint32_t, stateSize> state, Mix mix) {
    constexpr std::size_t kBlock = 64;
    const std::size_t whole = data.size() / kBlock * kBlock;
    for (std::size_t place = 0; place < whole; place += kBlock)
        mix(state, data.data() + place);
    std::array<std::byte, 2 * kBlock> rest{};
    const std::size_t left = data.size() - whole;
    std::copy_n(data.data() + whole, left, rest.begin());
    rest[left] = std::byte{0x80};
    const std::size_t end = left + 1 + 8 <= kBlock ? kBlock : 2 * kBlock;
    const std::uint64_t bits = std::uint64_t{data.size()} * 8;
    for (unsigned index = 0; index < 8; ++index)
        rest[end - 1 - index] = static_cast<std::byte>(bits >> 8 * index);
    for (std::size_t place = 0; place < end; place += kBlock)
        mix(state, rest.data() + place);
    std::array<std::byte, 4 * stateSize> digest;
    for (std::size_t index = 0; index < digest.size(); ++index)
        digest[index] = static_cast<std::byte>(state[index / 4] >> 8 * (3 - index % 4));
    return digest;
}

void mixSHA1(std::array<std::uint32_t, 5> &state, const std::byte *block) {
    std::array<std::uint32_t, 80> words;
    for (std::size_t index = 0; index < 16; ++index)
        words[index] = bigWord(block + 4 * index);
    for (std::size_t index = 16; index < 80; ++index)
        words[index] = std::rotl(
            words[index - 3] ^ words[index - 8] ^ words[index - 14] ^ words[index - 16], 1);
    auto [a, b, c, d, e] = state;
    for (std::size_t index = 0; index < 80; ++index) {
        std::uint32_t chosen, constant;
        if (index < 20)
            chosen = (b & c) | (~b & d), constant = 0x5A827999;
        else if (index < 40)
            chosen = b ^ c ^ d, constant = 0x6ED9EBA1;
        else if (index < 60)
            chosen = (b & c) | (b & d) | (c & d), constant = 0x8F1BBCDC;
        else
            chosen = b ^ c ^ d, constant = 0xCA62C1D6;
        const std::uint32_t next = std::rotl(a, 5) + chosen + e + constant + words[index];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d, state[4] + e};
}

/// The first 32 bits behind the point of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kSHA256Constants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

void mixSHA256(std::array<std::uint32_t, 8> &state, const std::byte *block) {
    std::array<std::uint32_t, 64> words;
    for (std::size_t index = 0; index < 16; ++index)
        words[index] = bigWord(block + 4 * index);
    for (std::size_t index = 16; index < 64; ++index) {
        const std::uint32_t x = words[index - 15], y = words[index - 2];
        words[index] = words[index - 16] + (std::rotr(x, 7) ^ std::rotr(x, 18) ^ x >> 3) +
                       words[index - 7] + (std::rotr(y, 17) ^ std::rotr(y, 19) ^ y >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t index = 0; index < 64; ++index) {
        const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                    ((e & f) ^ (~e & g)) + kSHA256Constants[index] + words[index];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const std::array<std::uint32_t, 8> mixed = {a, b, c, d, e, f, g, h};
    for (std::size_t index = 0; index < state.size(); ++index)
        state[index] += mixed[index];
}

/// For each byte, what four bits at a time do to a sum.
constexpr std::array<std::uint32_t, 256> kCRCTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t sum = byte;
        for (int bit = 0; bit < 8; ++bit)
            sum = sum >> 1 ^ (0xEDB88320 & (0 - (sum & 1)));
        table[byte] = sum;
    }
    return table;
}();

} // namespace

ZPSHA1Digest ZPSHA1DigestOfData(std::span<const std::byte> data) {
    return digestOf<5>(data, {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0}, mixSHA1);
}

ZPSHA256Digest ZPSHA256DigestOfData(std::span<const std::byte> data) {
    return digestOf<8>(data,
                       {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c,
                        0x1f83d9ab, 0x5be0cd19},
                       mixSHA256);
}

std::uint32_t ZPCRC32(std::uint32_t sum, std::span<const std::byte> bytes) {
    sum = ~sum;
    for (const std::byte byte : bytes)
        sum = kCRCTable[(sum ^ std::to_integer<std::uint32_t>(byte)) & 0xFF] ^ sum >> 8;
    return ~sum;
}

std::uint32_t ZPAdler32(std::uint32_t sum, std::span<const std::byte> bytes) {
    constexpr std::uint32_t kModulus = 65521;
    /// As many bytes as leave the sums within 32 bits.
    constexpr std::size_t kBytesAtOnce = 5552;
    std::uint32_t a = sum & 0xFFFF, b = sum >> 16;
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), kBytesAtOnce));
        for (const std::byte byte : part) {
            a += std::to_integer<std::uint32_t>(byte);
            b += a;
        }
        a %= kModulus;
        b %= kModulus;
        bytes = bytes.subspan(part.size());
    }
    return b << 16 | a;
}
