#include "map/overlay/WQDrawing.h"

#include "map/overlay/WQTypesetter.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t kRowsPerSlice = 64;
/// Touched columns that lie no farther apart are handed out as one range, which is quicker than
/// two.
constexpr std::size_t kSmallGap = 16;
/// Points farther out are not drawn: no mask reaches so far, and their coordinates may be anything.
constexpr double kFarthestPoint = 100000;

/// The nearest multiple of 1/256, in such units, clipped to the picture.
std::int32_t clippedUnits(double value, std::uint64_t size) {
    return static_cast<std::int32_t>(
        std::floor(std::clamp(value, 0.0, static_cast<double>(size)) * 256.0 + 0.5));
}

/// Lays a colour over a pixel whose alpha is not premultiplied.
void blend(WQPixel &pixel, WQPixel color, std::uint32_t coverage) {
    if (coverage == 255) {
        pixel = color;
        return;
    }
    const std::uint32_t front = coverage * 255;
    const std::uint32_t back = (255 - coverage) * pixel.alpha;
    const std::uint32_t sum = front + back;
    if (sum == 0)
        return;
    const auto mixed = [&](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>((a * front + b * back + sum / 2) / sum);
    };
    pixel = {mixed(color.red, pixel.red), mixed(color.green, pixel.green),
             mixed(color.blue, pixel.blue), static_cast<std::uint8_t>((sum + 127) / 255)};
}

WQPixel *pixelsOfRow(const WQOverlay::Block &block, std::size_t row) {
    return block.pixels.data() + (row - block.firstRow) * (block.columns.end - block.columns.first);
}

} // namespace

WQDrawing::WQDrawing(std::uint64_t scale)
    : _size(kWQLandSize * scale), _itemsBySlice(_size / kRowsPerSlice + 1) {}

WQDrawing::~WQDrawing() = default;

WQTypesetter &WQDrawing::typesetter() {
    if (_typesetter == nullptr)
        _typesetter = std::make_unique<WQTypesetter>();
    return *_typesetter;
}

// -- what is drawn

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

// -- drawing it

/// Of 256.
std::uint32_t WQDrawing::Range::coverageOfPixel(std::size_t pixel) const {
    const auto start = static_cast<std::int32_t>(pixel * 256);
    return static_cast<std::uint32_t>(std::min(end, start + 256) - std::max(begin, start));
}

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

std::vector<WQOverlay::Columns> WQDrawing::touchedColumns(std::size_t firstRow,
                                                          std::size_t rowCount) const {
    std::vector<Columns> ranges;
    for (const std::uint32_t index : itemsInRows(firstRow, rowCount))
        ranges.push_back({_items[index].columns.firstPixel(), _items[index].columns.endPixel()});
    std::ranges::sort(ranges, {}, &Columns::first);

    std::vector<Columns> touched;
    for (const Columns &range : ranges) {
        if (touched.empty() || range.first > touched.back().end + kSmallGap)
            touched.push_back(range);
        else
            touched.back().end = std::max(touched.back().end, range.end);
    }
    return touched;
}

void WQDrawing::drawOnBlock(const Block &block) const {
    for (const std::uint32_t index : itemsInRows(block.firstRow, block.rowCount)) {
        const Item &item = _items[index];
        if (item.columns.firstPixel() >= block.columns.end ||
            item.columns.endPixel() <= block.columns.first)
            continue;
        if (item.mask != nullptr)
            drawMask(item, block);
        else
            drawRectangle(item, block);
    }
}

WQDrawing::Pixels WQDrawing::commonPixels(const Item &item, const Block &block) {
    return {std::max(block.firstRow, item.rows.firstPixel()),
            std::min(block.firstRow + block.rowCount, item.rows.endPixel()),
            std::max(block.columns.first, item.columns.firstPixel()),
            std::min(block.columns.end, item.columns.endPixel())};
}

void WQDrawing::drawRectangle(const Item &item, const Block &block) {
    const auto [firstRow, endRow, first, end] = commonPixels(item, block);
    for (std::size_t row = firstRow; row < endRow; ++row) {
        WQPixel *pixels = pixelsOfRow(block, row) + (first - block.columns.first);
        const std::uint32_t coverageOfRow = item.rows.coverageOfPixel(row);
        const auto blendColumn = [&](std::size_t column) {
            const std::uint32_t product = item.columns.coverageOfPixel(column) * coverageOfRow;
            blend(pixels[column - first], item.color, (product * 255 + 0x8000) >> 16);
        };
        if (coverageOfRow < 256 || end - first <= 2) {
            for (std::size_t column = first; column < end; ++column)
                blendColumn(column);
            continue;
        }
        // Only the outermost columns can be covered in part.
        blendColumn(first);
        std::fill(pixels + 1, pixels + (end - first) - 1, item.color);
        blendColumn(end - 1);
    }
}

void WQDrawing::drawMask(const Item &item, const Block &block) {
    const WQMask &mask = *item.mask;
    const auto [firstRow, endRow, first, end] = commonPixels(item, block);
    for (std::size_t row = firstRow; row < endRow; ++row) {
        WQPixel *pixels = pixelsOfRow(block, row) + (first - block.columns.first);
        const auto maskRow = static_cast<std::ptrdiff_t>(row) - item.maskRow;
        const auto maskColumn = static_cast<std::ptrdiff_t>(first) - item.maskColumn;
        const std::uint8_t *coverage = mask.coverage.data() + maskRow * mask.width + maskColumn;
        for (std::size_t column = first; column < end; ++column, ++pixels, ++coverage)
            if (*coverage != 0)
                blend(*pixels, item.color, *coverage);
    }
}
