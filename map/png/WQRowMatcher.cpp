#include "map/png/WQRowMatcher.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

/// Earlier rows are kept for matches up to this many pixels.
constexpr std::size_t kHistoryLimit = 1 << 18;
/// So many pixels of a match are entered as places to find; more would cost time and find little.
constexpr std::size_t kPlacesPerMatch = 64;

template <class Pixel>
class PixelMatcher final : public WQRowMatcher {
  public:
    void restart() override { clearHistory(); }
    void appendRow(std::span<const WQRowSegment> row, std::uint32_t offset,
                   WQDeflateBlock &block) override;

  private:
    /// So many pixels are looked up at once: enough for the shortest match that deflate knows.
    static constexpr std::size_t kGroup = sizeof(Pixel) == 4 ? 2 : 4;
    /// A single pixel of four bytes is worth a match of its own: a map has so few colours that most
    /// occurred a little before.
    static constexpr bool kFindsSinglePixels = sizeof(Pixel) == 4;

    /// Where some pixels occurred last.
    struct Place {
        /// In the history, counted on through its clearings; a band has fewer pixels than 2^32.
        std::uint32_t position = 0;
        /// In the block, in bytes.
        std::uint32_t offset = 0;
        /// Pixels from there to the end of the segment, and what each stands for; both must suit a
        /// match. Neither is more than the width of an image, which 16 bits hold.
        std::uint16_t pixelsLeft = 0;
        std::uint16_t columnsPerPixel = 0;
    };
    struct Match {
        std::size_t pixelCount = 0;
        std::size_t distance = 0;
    };
    struct Segment {
        /// Of its first pixel in the history.
        std::size_t start = 0;
        std::size_t pixelCount = 0;
        std::size_t columnsPerPixel = 0;
        /// In the block.
        std::uint32_t offset = 0;

        std::size_t bytesPerPixel() const { return sizeof(Pixel) * columnsPerPixel; }
    };

    void clearHistory() {
        _clearedPixels += _history.size();
        _history.clear();
    }
    void forgetUnreachableRows(std::span<const WQRowSegment> row);
    void appendSegment(const Segment &segment, WQDeflateBlock &block);
    Match findMatch(const Segment &segment, std::size_t x);
    /// Inlined, since it is called for nearly every pixel and mostly finds out at once that there
    /// is nothing.
    [[gnu::always_inline]] inline Match matchAtPlace(const Segment &segment, std::size_t x,
                                                     const Place &place) const;
    void appendLiteral(Pixel pixel, std::size_t columnsPerPixel, WQDeflateBlock &block) const;
    void enterPlaces(const Segment &segment, std::size_t x, std::size_t count);

    [[gnu::always_inline]] inline void enter(Place &place, const Segment &segment,
                                             std::size_t x) const {
        place.position = static_cast<std::uint32_t>(_clearedPixels + segment.start + x);
        place.offset = static_cast<std::uint32_t>(segment.offset + x * segment.bytesPerPixel());
        place.pixelsLeft = static_cast<std::uint16_t>(segment.pixelCount - x);
        place.columnsPerPixel = static_cast<std::uint16_t>(segment.columnsPerPixel);
    }
    /// Enters a place and gives the one that was there. Field by field: a place that is put
    /// together on the stack and copied whole makes the processor wait, for a sixth of the time of
    /// encoding.
    [[gnu::always_inline]] inline Place replace(Place &place, const Segment &segment,
                                                std::size_t x) const {
        const Place earlier{place.position, place.offset, place.pixelsLeft, place.columnsPerPixel};
        enter(place, segment, x);
        return earlier;
    }
    Place &placeOfGroup(const Pixel *pixels) {
        std::uint64_t group = 0;
        std::memcpy(&group, pixels, sizeof(Pixel) * kGroup);
        return _groupPlaces[group * 0x9E3779B97F4A7C15 >> (64 - kGroupBits)];
    }
    Place &placeOfPixel(Pixel pixel) {
        return _pixelPlaces[pixel * std::uint32_t{2654435761} >> (32 - kPixelBits)];
    }

    static constexpr unsigned kGroupBits = 12, kPixelBits = 12;
    std::vector<Place> _groupPlaces = std::vector<Place>(1 << kGroupBits);
    std::vector<Place> _pixelPlaces = std::vector<Place>(kFindsSinglePixels ? 1 << kPixelBits : 0);

    /// Rows that matches may come from.
    std::vector<Pixel> _history;
    /// How many pixels the history had when it was cleared; never 0, which marks an empty place.
    std::size_t _clearedPixels = 1;
};

template <class Pixel>
void PixelMatcher<Pixel>::forgetUnreachableRows(std::span<const WQRowSegment> row) {
    std::size_t byteCount = 0, pixelCount = 0;
    for (const WQRowSegment &part : row) {
        byteCount += part.byteCount();
        pixelCount += part.pixels.size() / sizeof(Pixel);
    }
    if (byteCount >= WQDeflateBlock::kWindowSize || _history.size() + pixelCount > kHistoryLimit)
        clearHistory();
}

template <class Pixel>
void PixelMatcher<Pixel>::appendRow(std::span<const WQRowSegment> row, std::uint32_t offset,
                                    WQDeflateBlock &block) {
    forgetUnreachableRows(row);
    for (const WQRowSegment &part : row) {
        const Segment segment = {_history.size(), part.pixels.size() / sizeof(Pixel),
                                 part.columnsPerPixel, offset};
        _history.resize(segment.start + segment.pixelCount);
        std::memcpy(_history.data() + segment.start, part.pixels.data(), part.pixels.size());
        appendSegment(segment, block);
        offset += static_cast<std::uint32_t>(part.byteCount());
    }
}

template <class Pixel>
void PixelMatcher<Pixel>::appendSegment(const Segment &segment, WQDeflateBlock &block) {
    const Pixel *const pixels = _history.data() + segment.start;
    const std::size_t bytesPerPixel = segment.bytesPerPixel();
    for (std::size_t x = 0; x < segment.pixelCount;) {
        if (x > 0 && pixels[x] == pixels[x - 1]) {
            const Pixel *const end = std::find_if(pixels + x, pixels + segment.pixelCount,
                                                  [=](Pixel other) { return other != pixels[x]; });
            const auto count = static_cast<std::size_t>(end - pixels) - x;
            if (count * bytesPerPixel >= WQDeflateBlock::kShortestMatch) {
                block.appendMatch(count * bytesPerPixel, sizeof(Pixel));
                x += count;
                continue;
            }
        }
        const bool isLong = bytesPerPixel > WQDeflateBlock::kLongestMatch;
        if (const Match match = isLong ? Match() : findMatch(segment, x); match.pixelCount > 0) {
            block.appendMatch(match.pixelCount * bytesPerPixel, match.distance);
            enterPlaces(segment, x + 1, std::min(match.pixelCount, kPlacesPerMatch) - 1);
            x += match.pixelCount;
        } else {
            // A pixel that takes several matches is best said and then repeated from close by.
            appendLiteral(pixels[x], segment.columnsPerPixel, block);
            ++x;
        }
    }
}

template <class Pixel>
typename PixelMatcher<Pixel>::Match
PixelMatcher<Pixel>::matchAtPlace(const Segment &segment, std::size_t x, const Place &place) const {
    const std::size_t distance = segment.offset + x * segment.bytesPerPixel() - place.offset;
    if (place.position < _clearedPixels || distance > WQDeflateBlock::kWindowSize ||
        place.columnsPerPixel != segment.columnsPerPixel)
        return {};
    const Pixel *const from = _history.data() + (place.position - _clearedPixels);
    const Pixel *const to = _history.data() + segment.start + x;
    const std::size_t limit = std::min<std::size_t>(segment.pixelCount - x, place.pixelsLeft);
    std::size_t count = 0;
    while (count < limit && from[count] == to[count])
        ++count;
    return {count, distance};
}

/// Finds a match for the pixels from x on, and enters their place for later ones.
template <class Pixel>
typename PixelMatcher<Pixel>::Match PixelMatcher<Pixel>::findMatch(const Segment &segment,
                                                                   std::size_t x) {
    const Pixel *const pixels = _history.data() + segment.start + x;
    Match match;
    if (x + kGroup <= segment.pixelCount) {
        match = matchAtPlace(segment, x, replace(placeOfGroup(pixels), segment, x));
        if (match.pixelCount < kGroup)
            match = {};
    }
    if constexpr (kFindsSinglePixels) {
        const Place earlier = replace(placeOfPixel(*pixels), segment, x);
        if (match.pixelCount == 0)
            match = matchAtPlace(segment, x, earlier);
    }
    return match;
}

template <class Pixel>
void PixelMatcher<Pixel>::appendLiteral(Pixel pixel, std::size_t columnsPerPixel,
                                        WQDeflateBlock &block) const {
    block.appendLiterals(pixel, sizeof(Pixel));
    const std::size_t rest = sizeof(Pixel) * (columnsPerPixel - 1);
    if (rest >= WQDeflateBlock::kShortestMatch) {
        block.appendMatch(rest, sizeof(Pixel));
    } else {
        for (std::size_t index = 0; index < rest; ++index) // two or three columns of one byte each
            block.appendLiterals(pixel, 1);
    }
}

template <class Pixel>
void PixelMatcher<Pixel>::enterPlaces(const Segment &segment, std::size_t x, std::size_t count) {
    const Pixel *const pixels = _history.data() + segment.start;
    for (const std::size_t end = x + count; x < end; ++x) {
        if (x + kGroup <= segment.pixelCount)
            enter(placeOfGroup(pixels + x), segment, x);
        if constexpr (kFindsSinglePixels)
            enter(placeOfPixel(pixels[x]), segment, x);
    }
}

} // namespace

std::unique_ptr<WQRowMatcher> WQRowMatcher::newMatcher(std::size_t bytesPerPixel) {
    if (bytesPerPixel == 4)
        return std::make_unique<PixelMatcher<std::uint32_t>>();
    return std::make_unique<PixelMatcher<std::uint8_t>>();
}
