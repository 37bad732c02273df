#include "map/land/WQLandGrid.h"

#include <cmath>

std::unique_ptr<WQLandGrid> WQLandGrid::allocate() {
    ZPLargeArray<WQLandPoint> points(std::size_t{kSize} * kSize);
    if (points.empty())
        return nullptr;
    return std::unique_ptr<WQLandGrid>(new WQLandGrid(std::move(points)));
}

void WQLandGrid::setLandHeights(std::span<const float, 256> heights) {
    constexpr float kLimit = 9.0e18f; // below 2^63, where the conversion is still defined
    for (std::size_t index = 0; index < heights.size(); ++index) {
        const bool isUsable = std::abs(heights[index]) < kLimit;
        _heights[index] = static_cast<std::uint16_t>(
            isUsable ? static_cast<std::int64_t>(heights[index]) : std::int64_t{0});
        _elevations[index] = static_cast<float>(_heights[index] * (1.0 / 12.0));
    }
}

unsigned WQLandGrid::landTypeAtPoint(double x, double y) const {
    // Also false for what is not a number.
    const auto isInside = [](double value) { return value > -1.0 && value < kSize; };
    if (!isInside(x) || !isInside(y))
        return kWQDeepSeaLandType;
    return at(static_cast<unsigned>(x), static_cast<unsigned>(y)).landType();
}
