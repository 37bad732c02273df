#pragma once

#include "map/overlay/WQMask.h"
#include "map/overlay/WQOverlay.h"

#include <cmath>
#include <memory>

class WQTypesetter;

/// A rectangle of the map image in pixels, origin at its south-west corner, y up.
struct WQImageRect {
    double x = 0, y = 0, width = 0, height = 0;
};

/// A coordinate to 1/256 of a pixel, as fine as cairo places a path. Sums such as
/// 1894.4999999999998 stand for the centre of a pixel and must not fall on either side of it.
inline double WQNearestSubpixel(double value) {
    return std::round(value * 256) / 256;
}

/// A drawing as a list of opaque rectangles and masks, laid down in the order in which they were
/// added. Whatever needs a path or a font is turned into a mask when it is added, once and by one
/// thread; drawing then only blends coverage, so that it comes out the same in blocks of any size.
///
/// What lies outside the picture is clipped.
class WQDrawing : public WQOverlay {
  public:
    /// A drawing for a picture of so many pixels for each land point along each axis.
    explicit WQDrawing(std::uint64_t scale);
    ~WQDrawing() override;
    WQDrawing(const WQDrawing &) = delete;
    WQDrawing &operator=(const WQDrawing &) = delete;

    /// Height and width of the picture.
    std::uint64_t size() const { return _size; }

    /// Pixels that the rectangle covers in part are mixed with the ground.
    void fillRectangle(WQImageRect rectangle, WQPixel color);

    /// Lays a mask down with its origin on the pixel that holds this point; a point far outside
    /// the picture adds nothing.
    void addMask(std::shared_ptr<const WQMask> mask, WQImagePoint at, WQPixel color);

    /// Sets this drawing's text; made at first use, since fonts take a while to load.
    WQTypesetter &typesetter();

    std::vector<Columns> touchedColumns(std::size_t firstRow, std::size_t rowCount) const override;
    void drawOnBlock(const Block &block) const override;

  private:
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
    struct Pixels {
        std::size_t firstRow, endRow, firstColumn, endColumn;
    };
    static Pixels commonPixels(const Item &item, const Block &block);
    static void drawRectangle(const Item &item, const Block &block);
    static void drawMask(const Item &item, const Block &block);

    std::uint64_t _size;
    std::vector<Item> _items;
    /// For each slice of rows the items that reach into it, in order.
    std::vector<std::vector<std::uint32_t>> _itemsBySlice;
    std::unique_ptr<WQTypesetter> _typesetter;
};
