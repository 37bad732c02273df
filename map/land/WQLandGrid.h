#pragma once

#include "io/ZPLargeArray.h"
#include "map/land/WQLandColorTable.h"
#include "map/land/WQMapGeometry.h"
#include "map/land/WQPixel.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

/// One point of the land. The real height is not kept here: it follows from the index through the
/// grid's table, and four bytes a point instead of six are a third less to write and to read.
struct WQLandPoint {
    enum Flag : std::uint8_t {
        hasData = 1 << 0,
        hasObjectBlock = 1 << 1,
        isPassable = 1 << 2,
        wasAdded = 1 << 3,
        wasRemoved = 1 << 4,
        wasChanged = 1 << 5,
    };

    std::uint16_t terrainWord = 0;
    std::uint8_t heightIndex = 0;
    std::uint8_t flags = 0;

    bool has(Flag flag) const { return (flags & flag) != 0; }
    unsigned landType() const { return WQLandTypeOfTerrainWord(terrainWord); }
};
static_assert(sizeof(WQLandPoint) == sizeof(WQPixel));

/// The points of the whole world, row by row from the south, each row from the west, in one
/// allocation. A point that no land block covers is all zeros.
class WQLandGrid {
  public:
    static constexpr unsigned kSize = kWQLandSize;

    /// Null when there is not enough memory.
    [[nodiscard]] static std::unique_ptr<WQLandGrid> allocate();

    // Columns x and rows y are below kSize.
    WQLandPoint &at(unsigned x, unsigned y) { return _points.data()[y * std::size_t{kSize} + x]; }
    const WQLandPoint &at(unsigned x, unsigned y) const {
        return _points.data()[y * std::size_t{kSize} + x];
    }
    std::span<const WQLandPoint, kSize> row(unsigned y) const {
        return std::span<const WQLandPoint, kSize>(_points.data() + y * std::size_t{kSize}, kSize);
    }

    // A point and a pixel are of one size, so that the picture of the land can take its place: row
    // by row, and in the end the memory altogether.
    std::span<WQPixel, kSize> rowAsPixels(unsigned y) {
        return std::span<WQPixel, kSize>(reinterpret_cast<WQPixel *>(&at(0, y)), kSize);
    }
    ZPLargeArray<WQPixel> takePixels() && { return std::move(_points).as<WQPixel>(); }

    /// Takes the 256 real heights, by height index. Each is truncated to an integer of which the
    /// low 16 bits count; what is no number or far out of range counts as 0.
    void setLandHeights(std::span<const float, 256> heights);
    /// The real height of a point as it was taken.
    std::uint16_t height(const WQLandPoint &point) const { return _heights[point.heightIndex]; }
    /// Height in cells, for surface normals: a twelfth of the real height.
    float elevation(const WQLandPoint &point) const { return _elevations[point.heightIndex]; }

    /// The land type at a point given in cells, deep sea outside the world.
    unsigned landTypeAtPoint(double x, double y) const;

  private:
    explicit WQLandGrid(ZPLargeArray<WQLandPoint> points) : _points(std::move(points)) {}

    ZPLargeArray<WQLandPoint> _points;
    std::array<std::uint16_t, 256> _heights{};
    std::array<float, 256> _elevations{};
};
