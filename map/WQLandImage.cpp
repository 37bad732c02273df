#include "map/WQLandImage.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <vector>

namespace {

/// A drawing is laid on blocks of so many rows: tall enough to pay for setting one up, low enough
/// for their pixels to stay in the processor's cache.
constexpr std::size_t kRowsPerBlock = 64;
/// Rows in which a drawing touches more than this share of the columns are split further, so that a
/// line across the map makes only its own rows whole.
constexpr std::size_t kWideShare = 4;

} // namespace

/// Columns of the picture rows that show a land row; they begin and end with a land point.
template <class Pixel>
WQRowSegment WQLandImage<Pixel>::bareSegment(std::size_t landRow, Columns columns) const {
    const Pixel *pixels = pixelsOfLandRow(landRow);
    return {
        std::as_bytes(std::span(pixels + columns.first / _scale, pixels + columns.end / _scale)),
        _scale};
}

template <class Pixel>
void WQLandImage<Pixel>::readRows(std::size_t first, std::size_t count, const RowSink &sink) const {
    if (_drawing == nullptr) {
        readBareRows(first, count, sink);
        return;
    }
    const std::size_t rowsPerBlock = std::max(kRowsPerBlock / _scale, std::size_t{1}) * _scale;
    for (std::size_t end = first + count; first < end;) {
        const std::size_t blockEnd = std::min(end, (first / rowsPerBlock + 1) * rowsPerBlock);
        readDrawnRows(WQDrawnRows(*_drawing, first, blockEnd - first), sink);
        first = blockEnd;
    }
}

template <class Pixel>
void WQLandImage<Pixel>::readBareRows(std::size_t first, std::size_t count,
                                      const RowSink &sink) const {
    for (std::size_t end = first + count; first < end;) {
        const std::size_t landRow = first / _scale;
        const std::size_t next = std::min(end, (landRow + 1) * _scale);
        const WQRowSegment segment = bareSegment(landRow, {0, width()});
        sink({{&segment, 1}, next - first});
        first = next;
    }
}

/// What the drawing touches in some rows, widened to whole land points.
template <class Pixel>
std::vector<WQDrawnRows::Columns>
WQLandImage<Pixel>::touchedColumns(const WQDrawnRows &rows) const {
    std::vector<Columns> touched;
    for (Columns columns : rows.touchedColumns()) {
        columns = {columns.first / _scale * _scale, (columns.end + _scale - 1) / _scale * _scale};
        if (!touched.empty() && columns.first <= touched.back().end)
            touched.back().end = columns.end;
        else
            touched.push_back(columns);
    }
    return touched;
}

template <class Pixel>
void WQLandImage<Pixel>::readDrawnRows(const WQDrawnRows &rows, const RowSink &sink) const {
    const auto touched = touchedColumns(rows);
    const std::size_t first = rows.firstRow(), count = rows.rowCount();
    std::size_t touchedWidth = 0;
    for (const Columns &columns : touched)
        touchedWidth += columns.end - columns.first;
    if (touchedWidth == 0) {
        readBareRows(first, count, sink);
    } else if (touchedWidth > width() / kWideShare && count > _scale) {
        const std::size_t half = (count / _scale + 1) / 2 * _scale;
        readDrawnRows(rows.part(first, half), sink);
        readDrawnRows(rows.part(first + half, count - half), sink);
    } else {
        readTouchedRows(rows, touched, sink);
    }
}

/// The pixels of all rows in the columns that a drawing touches.
template <class Pixel>
class WQLandImage<Pixel>::Part {
  public:
    Part(Columns touched, std::size_t rowCount)
        : columns(touched), _width(touched.end - touched.first), _rowCount(rowCount),
          _pixels(std::make_unique_for_overwrite<Pixel[]>(_width * rowCount)) {}

    const Columns columns;
    std::span<Pixel> row(std::size_t index) const {
        return {_pixels.get() + index * _width, _width};
    }
    std::span<Pixel> pixels() const { return {_pixels.get(), _width * _rowCount}; }

  private:
    std::size_t _width, _rowCount;
    std::unique_ptr<Pixel[]> _pixels;
};

template <class Pixel>
void WQLandImage<Pixel>::enlarge(std::size_t landRow, Columns columns, Pixel *pixels) const {
    const Pixel *points = pixelsOfLandRow(landRow);
    for (std::size_t point = columns.first / _scale; point < columns.end / _scale; ++point)
        pixels = std::fill_n(pixels, _scale, points[point]);
}

template <class Pixel>
void WQLandImage<Pixel>::readTouchedRows(const WQDrawnRows &rows, std::span<const Columns> touched,
                                         const RowSink &sink) const {
    const std::size_t first = rows.firstRow(), count = rows.rowCount();
    std::vector<Part> parts;
    for (const Columns &columns : touched) {
        const Part &part = parts.emplace_back(columns, count);
        for (std::size_t index = 0; index < count; ++index) {
            const std::span<Pixel> row = part.row(index);
            if (index > 0 && isSameLandRow(first + index))
                std::ranges::copy(part.row(index - 1), row.begin());
            else
                enlarge((first + index) / _scale, columns, row.data());
        }
    }
    if constexpr (std::is_same_v<Pixel, WQPixel>) {
        std::vector<WQDrawnRows::Block> blocks;
        for (const Part &part : parts)
            blocks.push_back({part.columns, part.pixels()});
        rows.drawOnBlocks(blocks);
    }

    // The drawing may differ between the rows that show one land row; where it does not, they still
    // count as one.
    const auto isRepeat = [&](std::size_t index) {
        return isSameLandRow(first + index) && std::ranges::all_of(parts, [&](const Part &part) {
                   const std::span<Pixel> row = part.row(index);
                   return std::memcmp(row.data() - row.size(), row.data(), row.size_bytes()) == 0;
               });
    };
    std::vector<WQRowSegment> segments;
    for (std::size_t index = 0, next; index < count; index = next) {
        for (next = index + 1; next < count && isRepeat(next);)
            ++next;
        segments.clear();
        const std::size_t landRow = (first + index) / _scale;
        std::size_t column = 0;
        for (const Part &part : parts) {
            if (part.columns.first > column)
                segments.push_back(bareSegment(landRow, {column, part.columns.first}));
            segments.push_back({std::as_bytes(part.row(index)), 1});
            column = part.columns.end;
        }
        if (column < width())
            segments.push_back(bareSegment(landRow, {column, width()}));
        sink({segments, next - index});
    }
}

template class WQLandImage<WQPixel>;
template class WQLandImage<std::uint8_t>;
