#include "web/WQLandPacking.h"
#include "io/ZPParallel.h"
#include "io/ZPThreadValues.h"

#include <algorithm>
#include <functional>
#include <isa-l/igzip_lib.h>
#include <new>

namespace {

constexpr unsigned kRowsPerBand = 128;
constexpr unsigned kBandsPerPlane = (kWQLandSize + kRowsPerBand - 1) / kRowsPerBand;
constexpr std::uint32_t kLevel = 2;
constexpr std::uint32_t kLevelMemory = ISAL_DEF_LVL2_DEFAULT;
/// Stored blocks add five bytes to each 64 KiB at most; the rest is for the flush.
constexpr std::size_t kMostAdded = 4096;
/// An empty last block in fixed codes.
constexpr std::array kDeflateEnd{std::byte{3}, std::byte{0}};

/// The memory that a thread packs with, band after band.
struct Workshop {
    std::vector<std::uint8_t> bytes, deflated;
    std::vector<std::uint8_t> level = std::vector<std::uint8_t>(kLevelMemory);

    ZPData deflate() {
        deflated.resize(bytes.size() + bytes.size() / 1024 + kMostAdded);
        isal_zstream stream;
        isal_deflate_stateless_init(&stream);
        stream.level = kLevel;
        stream.level_buf = level.data();
        stream.level_buf_size = kLevelMemory;
        stream.flush = FULL_FLUSH;
        stream.end_of_stream = 0;
        stream.next_in = bytes.data();
        stream.avail_in = static_cast<std::uint32_t>(bytes.size());
        stream.next_out = deflated.data();
        stream.avail_out = static_cast<std::uint32_t>(deflated.size());
        if (isal_deflate_stateless(&stream) != COMP_OK)
            throw std::bad_alloc();
        const auto made = std::as_bytes(std::span(deflated)).first(stream.total_out);
        return {made.begin(), made.end()};
    }
};

using Row = std::span<const WQLandPoint, kWQLandSize>;

std::uint8_t medianPrediction(std::uint8_t west, std::uint8_t south, std::uint8_t between) {
    const auto [low, high] = std::minmax(west, south);
    if (between >= high)
        return low;
    return between <= low ? high : static_cast<std::uint8_t>(west + south - between);
}

void appendHeights(const WQLandGrid &grid, unsigned y, std::vector<std::uint8_t> &bytes) {
    static constexpr std::array<WQLandPoint, kWQLandSize> kNothing{};
    const Row row = grid.row(y);
    const Row below = y > 0 ? grid.row(y - 1) : Row(kNothing);
    std::uint8_t west = 0, between = 0;
    for (unsigned x = 0; x < kWQLandSize; ++x) {
        const std::uint8_t height = row[x].heightIndex, south = below[x].heightIndex;
        bytes.push_back(static_cast<std::uint8_t>(height - medianPrediction(west, south, between)));
        west = height;
        between = south;
    }
}

std::uint8_t lowByte(const WQLandPoint &point) {
    return static_cast<std::uint8_t>(point.terrainWord);
}

std::uint8_t highByte(const WQLandPoint &point) {
    return static_cast<std::uint8_t>(point.terrainWord >> 8);
}

/// Appends a row of one of the parts that have a byte for each point.
using Plane = std::function<void(unsigned y, std::vector<std::uint8_t> &bytes)>;

std::vector<Plane> planesOfLand(const WQLandGrid &grid) {
    const auto wordBytes = [&grid](auto byteOfPoint) {
        return [&grid, byteOfPoint](unsigned y, std::vector<std::uint8_t> &bytes) {
            std::ranges::transform(grid.row(y), std::back_inserter(bytes), byteOfPoint);
        };
    };
    return {[&grid](unsigned y, auto &bytes) { appendHeights(grid, y, bytes); }, wordBytes(lowByte),
            wordBytes(highByte)};
}

std::vector<Plane> planesOfDifference(const WQLandGrid &older, const WQLandGrid &newer) {
    const auto difference = [&](auto differenceOfPoints) {
        return [&, differenceOfPoints](unsigned y, std::vector<std::uint8_t> &bytes) {
            std::ranges::transform(older.row(y), newer.row(y), std::back_inserter(bytes),
                                   differenceOfPoints);
        };
    };
    const auto exclusiveOr = [&](auto byteOfPoint) {
        return difference([byteOfPoint](const WQLandPoint &one, const WQLandPoint &two) {
            return static_cast<std::uint8_t>(byteOfPoint(one) ^ byteOfPoint(two));
        });
    };
    return {difference([](const WQLandPoint &one, const WQLandPoint &two) {
                return static_cast<std::uint8_t>(one.heightIndex - two.heightIndex);
            }),
            exclusiveOr(lowByte), exclusiveOr(highByte)};
}

/// A land's parts in their order, each piece deflated by itself.
class Pieces {
  public:
    void pack(const std::vector<Plane> &planes, const WQBlockFlags &blocks) {
        const std::size_t first = _pieces.size(), bands = planes.size() * kBandsPerPlane;
        _pieces.resize(first + bands + 1);
        ZPParallelFor(bands + 1, [&](std::size_t index) {
            Workshop &workshop = _workshops.local();
            workshop.bytes.clear();
            if (index == bands) {
                workshop.bytes.assign(blocks.begin(), blocks.end());
            } else {
                const unsigned y = static_cast<unsigned>(index % kBandsPerPlane) * kRowsPerBand;
                for (unsigned row = y; row < std::min(y + kRowsPerBand, kWQLandSize); ++row)
                    planes[index / kBandsPerPlane](row, workshop.bytes);
            }
            _pieces[first + index] = workshop.deflate();
        });
    }

    ZPData joined() const {
        ZPData whole;
        for (const ZPData &piece : _pieces)
            whole.insert(whole.end(), piece.begin(), piece.end());
        whole.insert(whole.end(), kDeflateEnd.begin(), kDeflateEnd.end());
        return whole;
    }

  private:
    ZPThreadValues<Workshop> _workshops;
    std::vector<ZPData> _pieces;
};

} // namespace

ZPData WQPackLand(const WQPackableLand &land, const WQPackableLand *olderLand) {
    Pieces pieces;
    pieces.pack(planesOfLand(land.grid), land.blocks);
    if (olderLand != nullptr)
        pieces.pack(planesOfDifference(olderLand->grid, land.grid), olderLand->blocks);
    return pieces.joined();
}
