#pragma once

#include "game/WQMapCoordinate.h"

#include <cstddef>
#include <cstdint>

/// Land blocks along each side of the world, cells along each side of a block.
inline constexpr unsigned kWQLandBlocksPerSide = 255;
inline constexpr unsigned kWQCellsPerLandBlock = 8;
/// Land points along each side of the world: 2041.
inline constexpr unsigned kWQLandSize = kWQLandBlocksPerSide * kWQCellsPerLandBlock + 1;

/// A place on the map image in pixels, origin at the south-west corner, y up.
struct WQImagePoint {
    double x = 0, y = 0;
};

/// The cell that a map location lies on, counted from the south-west corner of the world.
inline WQImagePoint WQUnscaledPointForMapLocation(WQMapLocation location) {
    return {(location.x + kWQMapEdge) * 10.0, (location.y + kWQMapEdge) * 10.0};
}

/// One axis of `WQImagePointForMapLocation`: the middle of the square of `scale` pixels that shows
/// a land point, and there the centre of a pixel, so that lines of one pixel come out crisp.
inline double WQImageCoordinate(double value, std::uint64_t scale) {
    return (value + kWQMapEdge) * 10.0 * static_cast<double>(scale) +
           static_cast<double>(scale / 2) + 0.5;
}

inline WQImagePoint WQImagePointForMapLocation(WQMapLocation location, std::uint64_t scale) {
    return {WQImageCoordinate(location.x, scale), WQImageCoordinate(location.y, scale)};
}
