#pragma once

#include "io/ZPLargeArray.h"
#include "map/overlay/WQDrawnRows.h"
#include "map/png/WQImage.h"

#include <memory>
#include <vector>

/// An image of one value for each land point, each shown as a square of `scale` pixels, with or
/// without a drawing over it. A Pixel is a WQPixel or a grey level.
template <class Pixel>
class WQLandImage : public WQImage {
  public:
    /// Takes a value for each land point, row by row from the south.
    WQLandImage(std::size_t scale, ZPLargeArray<Pixel> pixels)
        : _scale(scale), _pixels(std::move(pixels)) {}

    /// Lays a drawing over the image, in place of any earlier one. Only a coloured image takes one.
    void setDrawing(std::unique_ptr<const WQDrawing> drawing) { _drawing = std::move(drawing); }

    std::size_t width() const override { return kWQLandSize * _scale; }
    std::size_t height() const override { return kWQLandSize * _scale; }
    std::size_t bytesPerPixel() const override { return sizeof(Pixel); }
    std::size_t rowsPerBand() const override { return kLandRowsPerBand * _scale; }
    void readRows(std::size_t first, std::size_t count, const RowSink &sink) const override;

  private:
    /// Makes 32 bands: enough for every processor to have some, few enough that what each costs of
    /// its own is small.
    static constexpr std::size_t kLandRowsPerBand = 64;

    using Columns = WQDrawnRows::Columns;

    Pixel *pixelsOfLandRow(std::size_t rowFromNorth) const {
        return _pixels.data() + (kWQLandSize - 1 - rowFromNorth) * kWQLandSize;
    }
    class Part;

    /// Whether a row shows the same land row as the one above.
    bool isSameLandRow(std::size_t row) const { return row % _scale != 0; }
    /// Fills in the pixels of some columns, which begin and end with a land point.
    void enlarge(std::size_t landRow, Columns columns, Pixel *pixels) const;
    WQRowSegment bareSegment(std::size_t landRow, Columns columns) const;
    void readBareRows(std::size_t first, std::size_t count, const RowSink &sink) const;
    void readDrawnRows(const WQDrawnRows &rows, const RowSink &sink) const;
    void readTouchedRows(const WQDrawnRows &rows, std::span<const Columns> touched,
                         const RowSink &sink) const;
    std::vector<Columns> touchedColumns(const WQDrawnRows &rows) const;

    std::size_t _scale;
    ZPLargeArray<Pixel> _pixels;
    std::unique_ptr<const WQDrawing> _drawing;
};

using WQColorImage = WQLandImage<WQPixel>;
using WQGreyImage = WQLandImage<std::uint8_t>;
