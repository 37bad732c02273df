#pragma once

#include "map/land/WQTerrainShader.h"

/// The land in colours: a pixel for each point, in the grid's order.
struct WQShadedLand {
    ZPLargeArray<WQPixel> pixels;
    WQLightRange light;
};

/// Shades a whole grid on all processors. The pixels take the grid's memory, which would otherwise
/// be needed twice.
[[nodiscard]] WQShadedLand WQShadeLand(std::unique_ptr<WQLandGrid> grid,
                                       const WQTerrainShader &shader);
