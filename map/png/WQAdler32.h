#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// The checksum of a zlib stream (RFC 1950, 8.2), over bytes that need not be there one by one.
class WQAdler32 {
  public:
    std::uint32_t value() const { return _b << 16 | _a; }

    void append(std::span<const std::byte> bytes);
    void appendZeros(std::uint64_t count);
    /// Each pixel of `bytesPerPixel` bytes `count` times in succession.
    void appendRepeatedPixels(std::span<const std::byte> pixels, std::size_t bytesPerPixel,
                              std::size_t count);
    /// The checksum of these bytes followed by `length` others whose own checksum is `next`.
    void appendChecksum(std::uint32_t next, std::uint64_t length);

  private:
    static constexpr std::uint64_t kModulus = 65521;

    std::uint32_t _a = 1, _b = 0;
};
