#pragma once

#include "map/png/WQAdler32.h"
#include "map/png/WQDeflateBlock.h"
#include "map/png/WQRowMatcher.h"

/// A part of a PNG file's picture, filtered and deflated on its own: its data ends on a byte and
/// refers to nothing before it, so that bands can be made side by side and joined in order.
class WQPNGBand {
  public:
    explicit WQPNGBand(std::size_t bytesPerPixel)
        : _bytesPerPixel(bytesPerPixel), _matcher(WQRowMatcher::newMatcher(bytesPerPixel)) {}

    /// All rows of a band are equally wide. A band has less than 4 GiB before deflating.
    void appendRows(const WQRowRun &rows);
    struct Deflated {
        ZPData bytes;
        /// Of the bytes before deflating, and how many they were.
        std::uint32_t checksum = 0;
        std::uint64_t length = 0;
    };
    /// Ends the band; rows that are appended next begin another one, in the same memory.
    [[nodiscard]] Deflated finish();

  private:
    using Segments = std::vector<WQRowSegment>;

    std::size_t bytesEqualToLastRow(std::span<const WQRowSegment> row) const;
    Segments differencesToLastRow(std::span<const WQRowSegment> row);
    void rememberRow(std::span<const WQRowSegment> row);
    void appendFilteredRow(unsigned filter, std::span<const WQRowSegment> row);
    WQRowSegment zeros(std::size_t byteCount) const;

    std::size_t _bytesPerPixel;
    std::unique_ptr<WQRowMatcher> _matcher;
    WQDeflateBlock _block;
    WQAdler32 _checksum;
    std::uint64_t _length = 0;
    /// The last row before filtering; segments of it in `_lastPixels`.
    Segments _lastRow;
    ZPData _lastPixels;
    /// Backs the segments that `differencesToLastRow` gives.
    ZPData _differences;
};
