#include "sample/SampleSmooth.h"

#include "sample/SampleParallel.h"

namespace {

template <class Reference>
void smoothLine(int length, int radius, const Reference &value) {
    std::vector<float> before(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i)
        before[static_cast<std::size_t>(i)] = value(i);
    const auto old = [&](int i) {
        return before[static_cast<std::size_t>(std::clamp(i, 0, length - 1))];
    };
    float sum = 0;
    for (int i = -radius; i <= radius; ++i)
        sum += old(i);
    for (int i = 0; i < length; ++i) {
        value(i) = sum / static_cast<float>(2 * radius + 1);
        sum += old(i + radius + 1) - old(i - radius);
    }
}

} // namespace

void SampleSmooth(SampleGrid<float> &grid, int radiusAlongX, int radiusAlongY) {
    const int side = grid.side();
    SampleForEachLine(side, [&](int y) {
        smoothLine(side, radiusAlongX, [&](int x) -> float & { return grid(x, y); });
    });
    SampleForEachLine(side, [&](int x) {
        smoothLine(side, radiusAlongY, [&](int y) -> float & { return grid(x, y); });
    });
}
