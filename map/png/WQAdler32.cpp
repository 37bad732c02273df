#include "map/png/WQAdler32.h"

#include "io/ZPChecksum.h"

#include <algorithm>

namespace {

/// Sums over pixels: of their bytes, of these times the index of the pixel, and of each byte times
/// its place in the pixel.
template <class Integer>
struct Sums {
    Integer bytes = 0, timesIndex = 0, timesPlace = 0;
};

/// So many pixels can be summed up in 32 bits, which the compiler does for several at once.
constexpr std::size_t kPixelsPerSum = 2048;

template <std::size_t bytesPerPixel>
Sums<std::uint32_t> sumOfPixels(std::span<const std::byte> pixels) {
    Sums<std::uint32_t> sums;
    const auto pixelCount = static_cast<std::uint32_t>(pixels.size() / bytesPerPixel);
    for (std::uint32_t pixel = 0; pixel < pixelCount; ++pixel) {
        std::uint32_t sum = 0;
        for (std::uint32_t place = 0; place < bytesPerPixel; ++place) {
            const auto byte = std::to_integer<std::uint32_t>(pixels[pixel * bytesPerPixel + place]);
            sum += byte;
            sums.timesPlace += byte * place;
        }
        sums.bytes += sum;
        sums.timesIndex += sum * pixel;
    }
    return sums;
}

struct PixelSums : Sums<std::uint64_t> {
    /// Of further pixels, the first of which has this index.
    void add(const Sums<std::uint32_t> &part, std::uint64_t index) {
        bytes += part.bytes;
        timesIndex += part.timesIndex + index * part.bytes;
        timesPlace += part.timesPlace;
    }
};

} // namespace

void WQAdler32::append(std::span<const std::byte> bytes) {
    const std::uint32_t sum = ZPAdler32(value(), bytes);
    _a = sum & 0xFFFF;
    _b = sum >> 16;
}

void WQAdler32::appendZeros(std::uint64_t count) {
    _b = static_cast<std::uint32_t>((_b + count % kModulus * _a) % kModulus);
}

void WQAdler32::appendRepeatedPixels(std::span<const std::byte> pixels, std::size_t bytesPerPixel,
                                     std::size_t count) {
    if (count == 1) {
        append(pixels);
        return;
    }
    // A byte counts once in a, and in b once for each byte from itself to the end. With m bytes a
    // pixel and k repeats, byte c of repeat t of pixel j stands m(jk + t) + c from the start, so
    // the repeats of pixel j together add, out of N bytes,
    //
    //     to a: k S        to b: (k (N - m j k) - m k (k - 1) / 2) S - k T
    //
    // where S is the sum of the pixel's bytes and T that of each times its place c in the pixel.
    PixelSums sums;
    for (std::size_t first = 0; first < pixels.size();) {
        const std::size_t length = std::min(pixels.size() - first, kPixelsPerSum * bytesPerPixel);
        const auto part = pixels.subspan(first, length);
        sums.add(bytesPerPixel == 4 ? sumOfPixels<4>(part) : sumOfPixels<1>(part),
                 first / bytesPerPixel);
        first += length;
    }
    const std::uint64_t m = bytesPerPixel, k = count, length = pixels.size() * count;
    const std::uint64_t weighted = (k * length - m * k * (k - 1) / 2) * sums.bytes -
                                   m * k * k * sums.timesIndex - k * sums.timesPlace;
    _b = static_cast<std::uint32_t>((_b + length % kModulus * _a + weighted) % kModulus);
    _a = static_cast<std::uint32_t>((_a + k * sums.bytes) % kModulus);
}

void WQAdler32::appendChecksum(std::uint32_t next, std::uint64_t length) {
    // The later sum began with a = 1; had it begun with this one's, each of its steps would have
    // added so much more.
    const std::uint64_t a = next & 0xFFFF, b = next >> 16;
    const std::uint64_t excess = (_a + kModulus - 1) % kModulus;
    _b = static_cast<std::uint32_t>((_b + b + length % kModulus * excess) % kModulus);
    _a = static_cast<std::uint32_t>((a + excess) % kModulus);
}
