#include "map/overlay/WQDrawnRows.h"

#include <algorithm>
#include <bit>

namespace {

/// Touched columns that lie no farther apart are handed out as one range, which is quicker than
/// two.
constexpr std::size_t kSmallGap = 16;

/// A set of columns, one bit each. Ranges go in in any number and order.
class ColumnSet {
  public:
    explicit ColumnSet(std::size_t columnCount) : _words(columnCount / kBits + 1) {}

    void add(std::size_t first, std::size_t end) {
        const std::size_t firstWord = first / kBits, lastWord = (end - 1) / kBits;
        const std::uint64_t head = ~std::uint64_t{0} << first % kBits;
        const std::uint64_t tail = ~std::uint64_t{0} >> (kBits - 1 - (end - 1) % kBits);
        if (firstWord == lastWord) {
            _words[firstWord] |= head & tail;
            return;
        }
        _words[firstWord] |= head;
        for (std::size_t word = firstWord + 1; word < lastWord; ++word)
            _words[word] = ~std::uint64_t{0};
        _words[lastWord] |= tail;
    }

    /// The first column from this one on that is in the set, or that is not; the end of all words
    /// where there is none.
    std::size_t next(std::size_t column, bool isInSet) const {
        std::uint64_t unwanted = ~std::uint64_t{0} << column % kBits;
        for (std::size_t word = column / kBits; word < _words.size(); ++word) {
            const std::uint64_t found = (isInSet ? _words[word] : ~_words[word]) & unwanted;
            if (found != 0)
                return word * kBits + static_cast<std::size_t>(std::countr_zero(found));
            unwanted = ~std::uint64_t{0};
        }
        return end();
    }
    std::size_t end() const { return _words.size() * kBits; }

  private:
    static constexpr std::size_t kBits = 64;
    std::vector<std::uint64_t> _words;
};

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

} // namespace

WQDrawnRows::WQDrawnRows(const WQDrawing &drawing, std::size_t firstRow, std::size_t rowCount)
    : WQDrawnRows(drawing, firstRow, rowCount, drawing.itemsInRows(firstRow, rowCount)) {}

WQDrawnRows::WQDrawnRows(const WQDrawing &drawing, std::size_t firstRow, std::size_t rowCount,
                         std::vector<std::uint32_t> items)
    : _drawing(drawing), _firstRow(firstRow), _endRow(firstRow + rowCount),
      _items(std::move(items)) {}

WQDrawnRows WQDrawnRows::part(std::size_t firstRow, std::size_t rowCount) const {
    std::vector<std::uint32_t> items;
    for (const std::uint32_t index : _items)
        if (const WQDrawing::Range &rows = _drawing._items[index].rows;
            rows.firstPixel() < firstRow + rowCount && rows.endPixel() > firstRow)
            items.push_back(index);
    return {_drawing, firstRow, rowCount, std::move(items)};
}

std::vector<WQDrawnRows::Columns> WQDrawnRows::touchedColumns() const {
    std::vector<Columns> touched;
    if (_items.empty())
        return touched;
    ColumnSet columns(_drawing.size());
    for (const std::uint32_t index : _items)
        columns.add(_drawing._items[index].columns.firstPixel(),
                    _drawing._items[index].columns.endPixel());
    for (std::size_t first = columns.next(0, true); first < columns.end();) {
        const std::size_t end = columns.next(first, false);
        if (!touched.empty() && first <= touched.back().end + kSmallGap)
            touched.back().end = end;
        else
            touched.push_back({first, end});
        first = columns.next(end, true);
    }
    return touched;
}

void WQDrawnRows::drawOnBlocks(std::span<const Block> blocks) const {
    for (const std::uint32_t index : _items) {
        const Item &item = _drawing._items[index];
        auto block = std::ranges::upper_bound(blocks, item.columns.firstPixel(), {},
                                              [](const Block &each) { return each.columns.end; });
        for (; block != blocks.end() && block->columns.first < item.columns.endPixel(); ++block)
            drawItem(item, *block);
    }
}

WQDrawnRows::Pixels WQDrawnRows::commonPixels(const Item &item, const Block &block) const {
    return {std::max(_firstRow, item.rows.firstPixel()), std::min(_endRow, item.rows.endPixel()),
            std::max(block.columns.first, item.columns.firstPixel()),
            std::min(block.columns.end, item.columns.endPixel())};
}

WQPixel *WQDrawnRows::pixelsOfRow(const Block &block, std::size_t row) const {
    return block.pixels.data() + (row - _firstRow) * (block.columns.end - block.columns.first);
}

void WQDrawnRows::drawItem(const Item &item, const Block &block) const {
    if (item.mask != nullptr)
        drawMask(item, block);
    else
        drawRectangle(item, block);
}

void WQDrawnRows::drawRectangle(const Item &item, const Block &block) const {
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

void WQDrawnRows::drawMask(const Item &item, const Block &block) const {
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
