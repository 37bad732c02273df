#include "sample/SampleTerrain.h"

#include <algorithm>

const std::array<float, 256> &SampleLandHeights() {
    static const std::array<float, 256> heights = [] {
        std::array<float, 256> table;
        for (std::size_t i = 0; i < table.size(); ++i) {
            const float t = static_cast<float>(i) / 255;
            table[i] = 260.5f * t + 1780.25f * t * t * t * t;
        }
        return table;
    }();
    return heights;
}

std::uint8_t SampleHeightIndex(float height) {
    const auto &heights = SampleLandHeights();
    const auto above = std::upper_bound(heights.begin() + 1, heights.end(), height);
    return static_cast<std::uint8_t>(above - heights.begin() - 1);
}
