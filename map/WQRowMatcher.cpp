#include "map/WQRowMatcher.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace {

/// Earlier rows are kept for matches up to this many pixels.
constexpr std::size_t kHistoryLimit = 1 << 18;
/// So many pixels of a match are entered as places to find; more would cost time and find little.
constexpr std::size_t kPlacesPerMatch = 64;

template <class Pixel>
class PixelMatcher final : public WQRowMatcher {
  public:
    bool isLastRow(const WQRowRun &row) const override {
        const std::size_t length = row.pixels.size();
        return _columnsPerPixel == row.columnsPerPixel && _width * sizeof(Pixel) == length &&
               std::memcmp(_history.data() + _rowStart, row.pixels.data(), length) == 0;
    }
    void appendRow(const WQRowRun &row, std::uint32_t offset, WQDeflateBlock &block) override;

  private:
    /// So many pixels are looked up at once: enough for the shortest match that deflate knows.
    static constexpr std::size_t kGroup = sizeof(Pixel) == 4 ? 2 : 4;
    /// A single pixel of four bytes is worth a match of its own: a map has so few colours that most
    /// occurred a little before.
    static constexpr bool kFindsSinglePixels = sizeof(Pixel) == 4;

    /// Where some pixels occurred last: in the history, counted from before its beginning as often
    /// as it was cleared, and in the block.
    struct Place {
        std::uint32_t position = 0;
        std::uint32_t offset = 0;
    };
    struct Match {
        std::size_t pixelCount = 0;
        std::size_t distance = 0;
    };

    void beginRow(const WQRowRun &row, std::uint32_t offset);
    Match findMatch(std::size_t x);
    Match matchAtPlace(std::size_t x, const Place &place) const;
    void appendLiteral(Pixel pixel, WQDeflateBlock &block) const;
    void enterPlaces(std::size_t x, std::size_t count);

    const Pixel *row() const { return _history.data() + _rowStart; }
    Place placeOfColumn(std::size_t x) const {
        return {static_cast<std::uint32_t>(_clearedPixels + _rowStart + x),
                static_cast<std::uint32_t>(_rowOffset + x * bytesPerColumn())};
    }
    std::size_t bytesPerColumn() const { return sizeof(Pixel) * _columnsPerPixel; }

    Place &placeOfGroup(std::size_t x) {
        std::uint64_t group = 0;
        std::memcpy(&group, row() + x, sizeof(Pixel) * kGroup);
        return _groupPlaces[group * 0x9E3779B97F4A7C15 >> (64 - kGroupBits)];
    }
    Place &placeOfPixel(std::size_t x) {
        return _pixelPlaces[row()[x] * std::uint32_t{2654435761} >> (32 - kPixelBits)];
    }

    static constexpr unsigned kGroupBits = 13, kPixelBits = 11;
    std::vector<Place> _groupPlaces = std::vector<Place>(1 << kGroupBits);
    std::vector<Place> _pixelPlaces = std::vector<Place>(kFindsSinglePixels ? 1 << kPixelBits : 0);

    /// Rows that matches may come from, the current one last.
    std::vector<Pixel> _history;
    /// How many pixels the history had when it was cleared; never 0, the place of nothing.
    std::size_t _clearedPixels = 1;
    std::size_t _width = 0, _columnsPerPixel = 0;
    std::size_t _rowStart = 0;
    std::uint32_t _rowOffset = 0;
};

template <class Pixel>
void PixelMatcher<Pixel>::beginRow(const WQRowRun &row, std::uint32_t offset) {
    const std::size_t width = row.pixels.size() / sizeof(Pixel);
    const std::size_t bytesPerRow = row.pixels.size() * row.columnsPerPixel + 1;
    if (row.columnsPerPixel != _columnsPerPixel || bytesPerRow > WQDeflateBlock::kWindowSize ||
        _history.size() + width > kHistoryLimit) {
        _clearedPixels += _history.size();
        _history.clear();
    }
    _width = width;
    _columnsPerPixel = row.columnsPerPixel;
    _rowStart = _history.size();
    _rowOffset = offset;
    _history.resize(_rowStart + width);
    std::memcpy(_history.data() + _rowStart, row.pixels.data(), row.pixels.size());
}

template <class Pixel>
void PixelMatcher<Pixel>::appendRow(const WQRowRun &rows, std::uint32_t offset,
                                    WQDeflateBlock &block) {
    beginRow(rows, offset);
    const Pixel *const pixels = row();
    for (std::size_t x = 0; x < _width;) {
        if (x > 0 && pixels[x] == pixels[x - 1]) {
            const Pixel *const end = std::find_if(pixels + x, pixels + _width,
                                                  [=](Pixel other) { return other != pixels[x]; });
            const auto count = static_cast<std::size_t>(end - pixels) - x;
            if (count * bytesPerColumn() >= WQDeflateBlock::kShortestMatch) {
                block.appendMatch(count * bytesPerColumn(), sizeof(Pixel));
                x += count;
                continue;
            }
        }
        if (const Match match = findMatch(x); match.pixelCount > 0) {
            block.appendMatch(match.pixelCount * bytesPerColumn(), match.distance);
            enterPlaces(x + 1, std::min(match.pixelCount, kPlacesPerMatch) - 1);
            x += match.pixelCount;
        } else {
            appendLiteral(pixels[x], block);
            ++x;
        }
    }
}

/// Finds a match for the pixels from column x on, and enters their place for later ones.
template <class Pixel>
typename PixelMatcher<Pixel>::Match PixelMatcher<Pixel>::findMatch(std::size_t x) {
    const Place here = placeOfColumn(x);
    Match match;
    if (x + kGroup <= _width) {
        match = matchAtPlace(x, std::exchange(placeOfGroup(x), here));
        if (match.pixelCount < kGroup)
            match = {};
    }
    if constexpr (kFindsSinglePixels) {
        const Place earlier = std::exchange(placeOfPixel(x), here);
        if (match.pixelCount == 0)
            match = matchAtPlace(x, earlier);
    }
    return match;
}

template <class Pixel>
typename PixelMatcher<Pixel>::Match PixelMatcher<Pixel>::matchAtPlace(std::size_t x,
                                                                      const Place &place) const {
    const std::size_t distance = _rowOffset + x * bytesPerColumn() - place.offset;
    if (place.position < _clearedPixels || distance > WQDeflateBlock::kWindowSize)
        return {};
    const std::size_t earlier = place.position - _clearedPixels;
    const std::size_t column = earlier >= _rowStart ? earlier - _rowStart : earlier % _width;
    const std::size_t limit = _width - std::max(x, column);
    const Pixel *const from = _history.data() + earlier, *const to = row() + x;
    std::size_t count = 0;
    while (count < limit && from[count] == to[count])
        ++count;
    return {count, distance};
}

template <class Pixel>
void PixelMatcher<Pixel>::appendLiteral(Pixel pixel, WQDeflateBlock &block) const {
    block.appendLiterals(pixel, sizeof(Pixel));
    const std::size_t rest = bytesPerColumn() - sizeof(Pixel);
    if (rest >= WQDeflateBlock::kShortestMatch)
        block.appendMatch(rest, sizeof(Pixel));
    else if (rest > 0) // two or three columns of one byte each
        for (std::size_t index = 0; index < rest; ++index)
            block.appendLiterals(pixel, 1);
}

template <class Pixel>
void PixelMatcher<Pixel>::enterPlaces(std::size_t x, std::size_t count) {
    for (const std::size_t end = x + count; x < end; ++x) {
        if (x + kGroup <= _width)
            placeOfGroup(x) = placeOfColumn(x);
        if constexpr (kFindsSinglePixels)
            placeOfPixel(x) = placeOfColumn(x);
    }
}

} // namespace

std::unique_ptr<WQRowMatcher> WQRowMatcher::newMatcher(std::size_t bytesPerPixel) {
    if (bytesPerPixel == 4)
        return std::make_unique<PixelMatcher<std::uint32_t>>();
    return std::make_unique<PixelMatcher<std::uint8_t>>();
}
