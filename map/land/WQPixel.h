#pragma once

#include <cstdint>

/// One pixel as it lies in memory and in the file: red, green, blue and alpha, 8 bits each. Alpha
/// is not multiplied in.
struct WQPixel {
    std::uint8_t red = 0, green = 0, blue = 0, alpha = 0;
    bool operator==(const WQPixel &) const = default;
};
