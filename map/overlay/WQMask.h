#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// How far a shape covers each pixel near it, 0 to 255, row by row from the north without padding.
/// `firstColumn` and `firstRow` count from the pixel that the shape is placed at, to the east and
/// to the south.
struct WQMask {
    int firstColumn = 0, firstRow = 0;
    int width = 0, height = 0;
    std::vector<std::uint8_t> coverage;
};
