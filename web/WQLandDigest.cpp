#include "web/WQLandDigest.h"

#include "io/ZPParallel.h"
#include "io/ZPSHA1.h"

#include <vector>

namespace {

constexpr std::size_t kRowsPerRange = 64;
constexpr std::size_t kBytesPerPoint = 3;
constexpr std::size_t kDigits = 16;

ZPSHA1Digest digestOfRow(std::span<const WQLandPoint, kWQLandSize> row) {
    std::array<std::byte, kBytesPerPoint * kWQLandSize> bytes;
    auto next = bytes.begin();
    for (const WQLandPoint &point : row) {
        *next++ = static_cast<std::byte>(point.terrainWord);
        *next++ = static_cast<std::byte>(point.terrainWord >> 8);
        *next++ = static_cast<std::byte>(point.heightIndex);
    }
    return ZPSHA1DigestOfData(bytes);
}

} // namespace

std::string WQLandDigest(const WQLandGrid &grid) {
    std::vector<ZPSHA1Digest> rows(kWQLandSize);
    ZPParallelRanges(kWQLandSize, kRowsPerRange, [&](std::size_t first, std::size_t end) {
        for (std::size_t y = first; y < end; ++y)
            rows[y] = digestOfRow(grid.row(static_cast<unsigned>(y)));
    });
    return ZPSHA1DigestString(std::as_bytes(std::span(rows))).substr(0, kDigits);
}
