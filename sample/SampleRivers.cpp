#include "sample/SampleRivers.h"

#include <cmath>
#include <utility>

namespace {

/// Water that makes a brook a river worth showing.
constexpr float kLeastDischarge = 1300;

float widthOf(float discharge) {
    return std::min(3.4f, 0.45f + 0.0075f * std::sqrt(discharge));
}

} // namespace

SampleRivers::SampleRivers(const SampleLandform &landform, const SampleClimate &climate)
    : _discharge(landform.height().spacing()), _bed(1, kDry), _rapid(1) {
    const SampleFlow &flow = landform.flow();
    const int spacing = landform.height().spacing();
    SampleGrid<float> rain(spacing);
    for (int y = 0; y < rain.side(); ++y)
        for (int x = 0; x < rain.side(); ++x)
            if (!landform.sea()(x, y)) {
                const float wet = climate.wetnessAt(static_cast<float>(x * spacing),
                                                    static_cast<float>(y * spacing));
                rain(x, y) = static_cast<float>(spacing * spacing) * 1.6f * wet * wet;
            }
    _discharge = flow.discharge(rain);

    // Sources are river points that no river flows into; upstream points come last in the order.
    std::vector<std::uint8_t> fed(rain.size(), 0), traced(rain.size(), 0);
    for (const std::uint32_t i : flow.order)
        if (_discharge[i] >= kLeastDischarge)
            fed[flow.receiver[i]] = 1;
    for (const std::uint32_t i : flow.order)
        if (_discharge[i] >= kLeastDischarge && !fed[i])
            traceFrom(i, landform, traced);
}

void SampleRivers::traceFrom(std::uint32_t source, const SampleLandform &landform,
                             std::vector<std::uint8_t> &traced) {
    const SampleFlow &flow = landform.flow();
    const int side = _discharge.side();
    std::vector<Node> course;
    for (std::uint32_t i = source;;) {
        const float x = static_cast<float>(static_cast<int>(i) % side * _discharge.spacing());
        const float y = static_cast<float>(static_cast<int>(i) / side * _discharge.spacing());
        const std::uint32_t next = flow.receiver[i];
        const float height = landform.height()[i];
        const bool rapid = height - landform.height()[next] > 1.6f;
        // Grids are bent when they are read; undo that, so that the river lies in its valley.
        SamplePoint p = {x, y};
        for (int pass = 0; pass < 3; ++pass) {
            const SamplePoint bent = landform.bent(p.x, p.y);
            p = {p.x + x - bent.x, p.y + y - bent.y};
        }
        course.push_back({p.x, p.y, height, widthOf(_discharge[i]), rapid});
        if (traced[i] || landform.sea()[i])
            break;
        traced[i] = 1;
        i = next;
    }
    draw(course);
}

void SampleRivers::draw(const std::vector<Node> &course) {
    // Two rounds of corner cutting; the ends stay, so that tributaries meet their river.
    std::vector<Node> line = course;
    for (int round = 0; round < 2 && line.size() > 2; ++round) {
        std::vector<Node> cut = {line.front()};
        for (std::size_t i = 0; i + 1 < line.size(); ++i) {
            const Node &a = line[i], &b = line[i + 1];
            const auto between = [&](float t) {
                return Node{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t,
                            a.bed + (b.bed - a.bed) * t, a.width + (b.width - a.width) * t,
                            a.rapid};
            };
            cut.push_back(between(0.25f));
            cut.push_back(between(0.75f));
        }
        cut.push_back(line.back());
        line = std::move(cut);
    }
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        const Node &a = line[i], &b = line[i + 1];
        const int steps = 1 + static_cast<int>(2 * SampleDistance({a.x, a.y}, {b.x, b.y}));
        for (int s = 0; s <= steps; ++s) {
            const float t = static_cast<float>(s) / static_cast<float>(steps);
            stamp({a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.bed + (b.bed - a.bed) * t,
                   a.width, a.rapid});
        }
    }
}

void SampleRivers::stamp(const Node &node) {
    const int reach = static_cast<int>(node.width) + 1;
    const int cx = static_cast<int>(node.x + 0.5f), cy = static_cast<int>(node.y + 0.5f);
    for (int y = cy - reach; y <= cy + reach; ++y)
        for (int x = cx - reach; x <= cx + reach; ++x) {
            const SamplePoint p = {static_cast<float>(x), static_cast<float>(y)};
            if (!_bed.contains(x, y) ||
                SampleDistance(p, {node.x, node.y}) > std::max(node.width, 0.71f))
                continue;
            _bed(x, y) = std::min(_bed(x, y), node.bed);
            _rapid(x, y) = node.rapid;
        }
}
