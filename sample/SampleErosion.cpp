#include "sample/SampleErosion.h"

#include <bit>
#include <cmath>
#include <queue>

namespace {

struct Offset {
    int x, y;
    float distance;
};

constexpr Offset kNeighbours[8] = {
    {-1, -1, 1.41421356f}, {0, -1, 1}, {1, -1, 1.41421356f}, {-1, 0, 1}, {1, 0, 1},
    {-1, 1, 1.41421356f},  {0, 1, 1},  {1, 1, 1.41421356f}};

/// Heights are not negative, so their bits order like the numbers themselves.
std::uint64_t queueKey(float level, std::size_t index) {
    return (std::uint64_t{std::bit_cast<std::uint32_t>(level)} << 32) | index;
}

/// The neighbour downhill at the steepest slope, or `fallback` in a flat.
std::uint32_t steepestNeighbour(const SampleGrid<float> &surface, std::size_t index,
                                std::uint32_t fallback) {
    const int x = static_cast<int>(index) % surface.side();
    const int y = static_cast<int>(index) / surface.side();
    std::uint32_t best = fallback;
    float steepest = 0;
    for (const Offset &n : kNeighbours) {
        if (!surface.contains(x + n.x, y + n.y))
            continue;
        const std::size_t other = surface.index(x + n.x, y + n.y);
        const float slope = (surface[index] - surface[other]) / n.distance;
        if (slope > steepest) {
            steepest = slope;
            best = static_cast<std::uint32_t>(other);
        }
    }
    return best;
}

void creep(SampleGrid<float> &height, const SampleGrid<std::uint8_t> &sea, float share) {
    const SampleGrid<float> before = height;
    const int side = height.side();
    for (int y = 1; y < side - 1; ++y)
        for (int x = 1; x < side - 1; ++x) {
            if (sea(x, y))
                continue;
            const float mean =
                0.25f * (before(x - 1, y) + before(x + 1, y) + before(x, y - 1) + before(x, y + 1));
            height(x, y) += share * (mean - before(x, y));
        }
}

} // namespace

SampleGrid<float> SampleFlow::discharge(const SampleGrid<float> &rain) const {
    SampleGrid<float> sum = rain;
    for (auto i = order.rbegin(); i != order.rend(); ++i)
        if (receiver[*i] != *i)
            sum[receiver[*i]] += sum[*i];
    return sum;
}

SampleFlow SampleRouteFlow(const SampleGrid<float> &height, const SampleGrid<std::uint8_t> &sea) {
    SampleFlow flow(height.spacing());
    flow.order.reserve(height.size());
    std::vector<std::uint8_t> reached(height.size(), 0);
    std::vector<std::uint64_t> storage;
    storage.reserve(height.size() / 4);
    std::priority_queue open(std::greater<std::uint64_t>{}, std::move(storage));
    std::queue<std::uint32_t> hollow;

    const int side = height.side();
    for (std::size_t i = 0; i < height.size(); ++i) {
        flow.receiver[i] = static_cast<std::uint32_t>(i);
        if (!sea[i])
            continue;
        reached[i] = 1;
        const int x = static_cast<int>(i) % side, y = static_cast<int>(i) / side;
        for (const Offset &n : kNeighbours)
            if (height.contains(x + n.x, y + n.y) && !sea(x + n.x, y + n.y)) {
                open.push(queueKey(0, i));
                break;
            }
    }
    while (!open.empty() || !hollow.empty()) {
        std::uint32_t i;
        if (!hollow.empty()) {
            i = hollow.front();
            hollow.pop();
        } else {
            i = static_cast<std::uint32_t>(open.top());
            open.pop();
        }
        if (!sea[i])
            flow.order.push_back(i);
        const int x = static_cast<int>(i) % side, y = static_cast<int>(i) / side;
        for (const Offset &n : kNeighbours) {
            if (!height.contains(x + n.x, y + n.y))
                continue;
            const std::size_t other = height.index(x + n.x, y + n.y);
            if (reached[other])
                continue;
            reached[other] = 1;
            flow.receiver[other] = i;
            if (height[other] <= flow.surface[i] && !sea[i]) {
                flow.surface[other] = flow.surface[i];
                hollow.push(static_cast<std::uint32_t>(other));
            } else {
                flow.surface[other] = height[other];
                open.push(queueKey(height[other], other));
            }
        }
    }
    // The flood's own way leads out of hollows; elsewhere water takes the steepest way, and a lower
    // neighbour always stands earlier in the order.
    for (const std::uint32_t i : flow.order)
        if (flow.surface[i] <= height[i])
            flow.receiver[i] = steepestNeighbour(flow.surface, i, flow.receiver[i]);
    return flow;
}

void SampleErode(SampleGrid<float> &height, const SampleGrid<std::uint8_t> &sea,
                 const SampleGrid<float> &uplift, const SampleErosionSettings &settings) {
    const float spacing = static_cast<float>(height.spacing());
    SampleGrid<float> rain(height.spacing());
    for (std::size_t i = 0; i < rain.size(); ++i)
        rain[i] = sea[i] ? 0.0f : spacing * spacing;

    for (int step = 0; step < settings.steps; ++step) {
        const SampleFlow flow = SampleRouteFlow(height, sea);
        const SampleGrid<float> area = flow.discharge(rain);
        for (const std::uint32_t i : flow.order) {
            const std::uint32_t below = flow.receiver[i];
            const bool diagonal = below % static_cast<std::uint32_t>(height.side()) !=
                                      i % static_cast<std::uint32_t>(height.side()) &&
                                  below / static_cast<std::uint32_t>(height.side()) !=
                                      i / static_cast<std::uint32_t>(height.side());
            const float distance = spacing * (diagonal ? 1.41421356f : 1.0f);
            const float k =
                settings.erodibility * settings.stepLength * std::sqrt(area[i]) / distance;
            height[i] = (height[i] + settings.stepLength * uplift[i] + k * height[below]) / (1 + k);
        }
        if (settings.creep > 0)
            creep(height, sea, settings.creep);
    }
}
