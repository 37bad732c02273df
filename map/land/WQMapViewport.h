#pragma once

#include "map/land/WQTerrainShader.h"

#include <span>
#include <vector>

/// A window of 512 by 512 land points, for callers that show a part of the land and move about.
class WQMapViewport {
  public:
    static constexpr std::size_t kSize = 512;

    /// The land point at the window's south-west corner; for the bitmap only.
    std::uint32_t xOffset = 0, yOffset = 0;

    void setupTypes() { _types.assign(kSize * kSize, 0); }
    /// Takes the land types from the south-west corner of the world, whatever the offsets.
    void updateTypes(const WQLandGrid &grid);
    /// Row by row from the south.
    std::span<const std::uint8_t> types() const { return _types; }

    void setupBitmap() { _bitmap.assign(kSize * kSize, {}); }
    /// Shades what lies in the window, in parallel; what lies outside the world is transparent.
    void updateBitmap(const WQLandGrid &grid, const WQTerrainShader &shader);
    /// Row by row from the north.
    std::span<const WQPixel> bitmap() const { return _bitmap; }

  private:
    std::vector<std::uint8_t> _types;
    std::vector<WQPixel> _bitmap;
};
