#include "map/WQLandImage.h"

#include <algorithm>
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

/// Fills `pixels` with the given columns of the picture rows that show a land row.
template <class Pixel>
void WQLandImage<Pixel>::enlarge(std::size_t landRow, Columns columns, Pixel *pixels) const {
    const Pixel *source = pixelsOfLandRow(landRow) + columns.first / _scale;
    for (std::size_t column = columns.first; column < columns.end;) {
        const std::size_t end = std::min(columns.end, (column / _scale + 1) * _scale);
        pixels = std::fill_n(pixels, end - column, *source++);
        column = end;
    }
}

template <class Pixel>
void WQLandImage<Pixel>::readRows(std::size_t first, std::size_t count, const RowSink &sink) const {
    if (_overlay == nullptr) {
        readBareRows(first, count, sink);
        return;
    }
    const std::size_t rowsPerBlock = std::max(kRowsPerBlock / _scale, std::size_t{1}) * _scale;
    for (std::size_t end = first + count; first < end;) {
        const std::size_t blockEnd = std::min(end, (first / rowsPerBlock + 1) * rowsPerBlock);
        readRowsUnderOverlay(first, blockEnd - first, sink);
        first = blockEnd;
    }
}

template <class Pixel>
void WQLandImage<Pixel>::readBareRows(std::size_t first, std::size_t count,
                                      const RowSink &sink) const {
    for (std::size_t end = first + count; first < end;) {
        const std::size_t landRow = first / _scale;
        const std::size_t next = std::min(end, (landRow + 1) * _scale);
        sink(
            {std::as_bytes(std::span(pixelsOfLandRow(landRow), WQLandSize)), _scale, next - first});
        first = next;
    }
}

template <class Pixel>
void WQLandImage<Pixel>::readRowsUnderOverlay(std::size_t first, std::size_t count,
                                              const RowSink &sink) const {
    if constexpr (std::is_same_v<Pixel, WQPixel>) {
        const auto touched = _overlay->touchedColumns(first, count);
        std::size_t touchedWidth = 0;
        for (const Columns &columns : touched)
            touchedWidth += columns.end - columns.first;
        if (touched.empty()) {
            readBareRows(first, count, sink);
            return;
        }
        if (touchedWidth > width() / kWideShare && count > _scale) {
            const std::size_t half = (count / _scale + 1) / 2 * _scale;
            readRowsUnderOverlay(first, half, sink);
            readRowsUnderOverlay(first + half, count - half, sink);
            return;
        }

        std::vector<std::vector<Pixel>> blocks;
        for (const Columns &columns : touched) {
            const std::size_t blockWidth = columns.end - columns.first;
            auto &pixels = blocks.emplace_back(blockWidth * count);
            for (std::size_t row = 0; row < count; ++row)
                enlarge((first + row) / _scale, columns, pixels.data() + row * blockWidth);
            _overlay->drawOnBlock({first, count, columns, pixels});
        }

        // The drawing may differ between the rows of one land row; where it does not, they still
        // count as one.
        std::vector<Pixel> row(width());
        std::size_t repeats = 0;
        for (std::size_t index = 0; index < count; ++index) {
            const std::size_t landRow = (first + index) / _scale;
            bool isNew = index == 0 || landRow != (first + index - 1) / _scale;
            for (std::size_t part = 0; part < blocks.size() && !isNew; ++part) {
                const std::size_t blockWidth = touched[part].end - touched[part].first;
                const Pixel *pixels = blocks[part].data() + index * blockWidth;
                isNew = !std::equal(pixels - blockWidth, pixels, pixels);
            }
            if (!isNew) {
                ++repeats;
                continue;
            }
            if (repeats > 0)
                sink({std::as_bytes(std::span<const Pixel>(row)), 1, repeats});
            enlarge(landRow, {0, width()}, row.data());
            for (std::size_t part = 0; part < blocks.size(); ++part) {
                const std::size_t blockWidth = touched[part].end - touched[part].first;
                std::copy_n(blocks[part].data() + index * blockWidth, blockWidth,
                            row.data() + touched[part].first);
            }
            repeats = 1;
        }
        sink({std::as_bytes(std::span<const Pixel>(row)), 1, repeats});
    } else {
        readBareRows(first, count, sink);
    }
}

template class WQLandImage<WQPixel>;
template class WQLandImage<std::uint8_t>;
