#include "map/overlay/WQDrawing.h"

#include <algorithm>

namespace {

constexpr std::size_t kRowsPerSlice = 64;
/// Points farther out are not drawn: no mask reaches so far, and their coordinates may be anything.
constexpr double kFarthestPoint = 100000;

/// The nearest multiple of 1/256, in such units, clipped to the picture.
std::int32_t clippedUnits(double value, std::uint64_t size) {
    // Written so that a value that is not a number falls to 0 and never reaches the conversion.
    const double clipped = value > 0 ? std::min(value, static_cast<double>(size)) : 0.0;
    return static_cast<std::int32_t>(std::floor(clipped * 256.0 + 0.5));
}

} // namespace

WQDrawing::WQDrawing(std::uint64_t scale)
    : _size(kWQLandSize * scale), _itemsBySlice(_size / kRowsPerSlice + 1) {}

bool WQDrawing::shows(WQImageRect rectangle) const {
    const auto size = static_cast<double>(_size);
    return rectangle.x < size && rectangle.x + rectangle.width > 0 && rectangle.y < size &&
           rectangle.y + rectangle.height > 0;
}

void WQDrawing::fillRectangle(WQImageRect rectangle, WQPixel color) {
    const double height = static_cast<double>(_size);
    const Range columns{clippedUnits(rectangle.x, _size),
                        clippedUnits(rectangle.x + rectangle.width, _size)};
    const Range rows{clippedUnits(height - (rectangle.y + rectangle.height), _size),
                     clippedUnits(height - rectangle.y, _size)};
    add({columns, rows, color});
}

void WQDrawing::addMask(std::shared_ptr<const WQMask> mask, WQImagePoint at, WQPixel color) {
    // Written so that a coordinate that is not a number goes no further either.
    if (!(std::abs(at.x) < kFarthestPoint && std::abs(at.y) < kFarthestPoint))
        return;
    const auto size = static_cast<std::int32_t>(_size);
    const auto column = static_cast<std::int32_t>(std::floor(at.x)) + mask->firstColumn;
    const auto row = size - 1 - static_cast<std::int32_t>(std::floor(at.y)) + mask->firstRow;
    const auto clipped = [size](std::int32_t first, std::int32_t count) {
        return Range{std::clamp(first, 0, size) * 256, std::clamp(first + count, 0, size) * 256};
    };
    add({clipped(column, mask->width), clipped(row, mask->height), color, column, row,
         std::move(mask)});
}

void WQDrawing::add(Item item) {
    if (item.columns.begin >= item.columns.end || item.rows.begin >= item.rows.end)
        return;
    const std::size_t lastSlice = (item.rows.endPixel() - 1) / kRowsPerSlice;
    for (auto slice = item.rows.firstPixel() / kRowsPerSlice; slice <= lastSlice; ++slice)
        _itemsBySlice[slice].push_back(static_cast<std::uint32_t>(_items.size()));
    _items.push_back(std::move(item));
}

/// Of 256.
std::uint32_t WQDrawing::Range::coverageOfPixel(std::size_t pixel) const {
    const auto start = static_cast<std::int32_t>(pixel * 256);
    return static_cast<std::uint32_t>(std::min(end, start + 256) - std::max(begin, start));
}

/// The items that reach into some rows, in the order in which they were added.
std::vector<std::uint32_t> WQDrawing::itemsInRows(std::size_t firstRow,
                                                  std::size_t rowCount) const {
    std::vector<std::uint32_t> items;
    const std::size_t endRow = firstRow + rowCount;
    for (auto slice = firstRow / kRowsPerSlice; slice * kRowsPerSlice < endRow; ++slice)
        for (const std::uint32_t index : _itemsBySlice[slice])
            if (const Range &rows = _items[index].rows;
                rows.firstPixel() < endRow && rows.endPixel() > firstRow)
                items.push_back(index);
    // An item that reaches into several slices was found in each.
    std::ranges::sort(items);
    const auto duplicates = std::ranges::unique(items);
    items.erase(duplicates.begin(), duplicates.end());
    return items;
}
