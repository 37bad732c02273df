#pragma once

#include "map/png/WQDeflateBlock.h"
#include "map/png/WQImage.h"

#include <memory>

/// Turns rows of pixels into the literals and matches of a deflate block.
///
/// It looks at pixels and not at bytes, and at a pixel that stands for several columns once, so
/// that its effort depends on the land shown and not on the scale. One thread at a time.
class WQRowMatcher {
  public:
    /// For pixels of 4 or of 1 byte.
    [[nodiscard]] static std::unique_ptr<WQRowMatcher> newMatcher(std::size_t bytesPerPixel);
    virtual ~WQRowMatcher() = default;

    /// Forgets all rows: the next one begins another block.
    virtual void restart() = 0;
    /// Appends the bytes of one row, which begin at `offset` in the block.
    virtual void appendRow(std::span<const WQRowSegment> row, std::uint32_t offset,
                           WQDeflateBlock &block) = 0;
};
