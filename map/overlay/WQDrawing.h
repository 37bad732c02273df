#pragma once

#include "map/land/WQMapGeometry.h"
#include "map/land/WQPixel.h"
#include "map/overlay/WQMask.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

/// A rectangle of the map image in pixels, origin at its south-west corner, y up.
struct WQImageRect {
    double x = 0, y = 0, width = 0, height = 0;
};

/// A coordinate to 1/256 of a pixel, as fine as cairo places a path. Sums such as
/// 1894.4999999999998 stand for the centre of a pixel and must not fall on either side of it.
inline double WQNearestSubpixel(double value) {
    return std::floor(value * 256 + 0.5) / 256;
}

/// What is laid over the land: a list of opaque rectangles and masks for a picture of the whole
/// map, in the order in which they were added. Whatever needs a path or a font is turned into a
/// mask before it is added, once and by one thread; see WQDrawnRows for how it gets on the picture.
///
/// Added to by one thread at a time; then read by any number. What lies outside the picture is
/// clipped.
class WQDrawing {
  public:
    /// A drawing for a picture of so many pixels for each land point along each axis.
    explicit WQDrawing(std::uint64_t scale);
    WQDrawing(const WQDrawing &) = delete;
    WQDrawing &operator=(const WQDrawing &) = delete;

    /// Height and width of the picture in pixels.
    [[nodiscard]] std::uint64_t size() const { return _size; }
    /// Whether a rectangle has pixels in common with the picture.
    [[nodiscard]] bool shows(WQImageRect rectangle) const;

    /// Pixels that the rectangle covers in part are mixed with the ground.
    void fillRectangle(WQImageRect rectangle, WQPixel color);

    /// Lays a mask down with its origin on the pixel that holds this point; a point far outside
    /// the picture adds nothing. The mask is shared and must not change any more.
    void addMask(std::shared_ptr<const WQMask> mask, WQImagePoint at, WQPixel color);

  private:
    friend class WQDrawnRows;

    /// A range along one axis in 1/256 of a pixel.
    struct Range {
        std::int32_t begin, end;

        std::size_t firstPixel() const { return static_cast<std::size_t>(begin) >> 8; }
        std::size_t endPixel() const { return (static_cast<std::size_t>(end) + 255) >> 8; }
        std::uint32_t coverageOfPixel(std::size_t pixel) const;
    };

    /// Ranges are clipped to the picture; rows count from the north.
    struct Item {
        Range columns, rows;
        WQPixel color;
        /// Where the mask's first column and row lie in the picture; no mask for a rectangle.
        std::int32_t maskColumn = 0, maskRow = 0;
        std::shared_ptr<const WQMask> mask = nullptr;
    };

    void add(Item item);
    std::vector<std::uint32_t> itemsInRows(std::size_t firstRow, std::size_t rowCount) const;

    std::uint64_t _size;
    std::vector<Item> _items;
    /// For each slice of rows the items that reach into it, in order.
    std::vector<std::vector<std::uint32_t>> _itemsBySlice;
};
