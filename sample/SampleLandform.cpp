#include "sample/SampleLandform.h"

#include "sample/SampleParallel.h"
#include "sample/SampleRandom.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kCoarse = 4;
constexpr int kFine = 2;
constexpr float kWorldEdge = SamplePointsPerSide - 1;

template <class Value, class Function>
void fillInParallel(SampleGrid<Value> &grid, const Function &valueAt) {
    SampleForEachLine(grid.side(), [&](int y) {
        for (int x = 0; x < grid.side(); ++x)
            grid(x, y) = valueAt(static_cast<float>(x * grid.spacing()),
                                 static_cast<float>(y * grid.spacing()));
    });
}

float distanceToSegment(SamplePoint p, SamplePoint a, SamplePoint b) {
    const float dx = b.x - a.x, dy = b.y - a.y;
    const float t =
        std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy), 0.0f, 1.0f);
    return SampleDistance(p, {a.x + t * dx, a.y + t * dy});
}

} // namespace

SampleLandform::SampleLandform(std::uint64_t seed)
    : _shape(SampleHash(seed, 1)), _detail(SampleHash(seed, 2)), _bend(SampleHash(seed, 3)),
      _plan(SampleMakePlan(seed)), _coast(kCoarse), _height(kFine), _sea(kFine), _flow(kFine),
      _lakeDepth(kFine) {
    shapeCoast();
    placeVolcano(seed);
    raiseLand();
    raiseVolcano();
    sinkLakes(seed);
    fillHollows();
}

/// Before noise: about 1 deep inside a lobe, 0 at its rim.
float SampleLandform::continent(float x, float y) const {
    const float wx = x + 190 * _shape.layered(x / 380, y / 380, 3);
    const float wy = y + 190 * _shape.layered(x / 380 + 61, y / 380 - 43, 3);
    float inside = -2;
    for (const SamplePlan::Lobe &lobe : _plan.lobes) {
        const float dx = (wx - lobe.centre.x) / lobe.width;
        const float dy = (wy - lobe.centre.y) / lobe.height;
        inside = std::max(inside, 1 - std::sqrt(dx * dx + dy * dy));
    }
    // The map's frame and the corner of its title stay open sea.
    const float frame = std::min(std::min(x, y), std::min(kWorldEdge - x, kWorldEdge - y));
    return inside - 1.2f * (1 - SampleStep(30, 170, frame)) - 1.5f * SampleOpenCorner(x, y);
}

void SampleLandform::shapeCoast() {
    fillInParallel(_coast, [&](float x, float y) {
        const float rough = _shape.layered(x / 260 + 7, y / 260 + 5, 7, 0.55f);
        const float broken = _detail.layered(x / 70 + 3, y / 70 + 9, 4, 0.6f);
        return 0.62f * continent(x, y) + 0.80f * rough + 0.10f * broken - 0.08f;
    });
    joinInlandSeas();
    fillInParallel(_sea, [&](float x, float y) -> std::uint8_t { return _coast.cubic(x, y) <= 0; });
}

/// Water that no sea way reaches becomes land, or rivers would end in it.
void SampleLandform::joinInlandSeas() {
    std::vector<std::size_t> open = {0};
    SampleGrid<std::uint8_t> reached(kCoarse);
    reached[0] = 1;
    while (!open.empty()) {
        const int x = static_cast<int>(open.back()) % _coast.side();
        const int y = static_cast<int>(open.back()) / _coast.side();
        open.pop_back();
        constexpr int kSteps[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
        for (const auto &step : kSteps) {
            const int nx = x + step[0], ny = y + step[1];
            if (!_coast.contains(nx, ny) || reached(nx, ny) || _coast(nx, ny) > 0)
                continue;
            reached(nx, ny) = 1;
            open.push_back(_coast.index(nx, ny));
        }
    }
    for (std::size_t i = 0; i < _coast.size(); ++i)
        if (_coast[i] <= 0 && !reached[i])
            _coast[i] = 0.01f - 0.1f * _coast[i];
}

float SampleLandform::mountains(float x, float y) const {
    const SamplePoint warped = {x + 60 * _shape.layered(x / 130 + 11, y / 130, 3),
                                y + 60 * _shape.layered(x / 130, y / 130 + 23, 3)};
    float most = 0;
    for (const SamplePlan::Range &range : _plan.ranges) {
        float distance = 1e9f;
        for (std::size_t i = 1; i < range.crest.size(); ++i)
            distance =
                std::min(distance, distanceToSegment(warped, range.crest[i - 1], range.crest[i]));
        const float t = distance / range.width;
        most = std::max(most, range.strength / (1 + t * t * t));
    }
    return most;
}

/// Uplift along the ranges and rivers that cut into it, first coarsely for the great valleys, then
/// finely for their branches.
void SampleLandform::raiseLand() {
    SampleGrid<float> uplift(kCoarse), rough(kCoarse);
    SampleGrid<std::uint8_t> sea(kCoarse);
    fillInParallel(uplift, [&](float x, float y) {
        const float coast = _coast.linear(x, y);
        const float hills = SampleStep(0.05f, 0.6f, _shape.layered(x / 170 + 3, y / 170 + 91, 4));
        const float folded = 0.45f + 0.8f * _detail.ridged(x / 90, y / 90, 3);
        const float inland = SampleStep(0.0f, 0.12f, coast);
        return inland * (0.07f + 0.6f * hills + 6.2f * mountains(x, y) * folded);
    });
    fillInParallel(sea, [&](float x, float y) -> std::uint8_t { return _coast.linear(x, y) <= 0; });
    fillInParallel(rough,
                   [&](float x, float y) { return 6 + 5 * _detail.layered(x / 30, y / 30, 4); });
    for (std::size_t i = 0; i < rough.size(); ++i)
        if (sea[i])
            rough[i] = 0;
    SampleErode(rough, sea, uplift,
                {.steps = 24, .stepLength = 7, .erodibility = 0.11f, .creep = 0.04f});

    fillInParallel(_height, [&](float x, float y) {
        if (_sea.nearest(x, y))
            return 0.0f;
        return std::max(0.5f, rough.cubic(x, y) + 2.0f * _detail.layered(x / 9, y / 9, 2));
    });
    SampleGrid<float> fineUplift(kFine);
    fillInParallel(fineUplift, [&](float x, float y) { return uplift.linear(x, y); });
    SampleErode(_height, _sea, fineUplift,
                {.steps = 4, .stepLength = 5, .erodibility = 0.11f, .creep = 0.06f});
}

/// As far from the sea, and from other mountains, as a few tries find.
void SampleLandform::placeVolcano(std::uint64_t seed) {
    SampleRandom random(SampleHash(seed, 6));
    float best = -2;
    for (int tries = 0; tries < 120; ++tries) {
        const SamplePoint place = {static_cast<float>(random.range(250, 1800)),
                                   static_cast<float>(random.range(250, 1800))};
        const float worth =
            std::min(0.3f, _coast.linear(place.x, place.y)) - 0.5f * mountains(place.x, place.y);
        if (worth > best) {
            best = worth;
            _volcano = place;
        }
    }
}

/// A cone with a crater, on top of whatever stands there.
void SampleLandform::raiseVolcano() {
    fillInParallel(_height, [&](float x, float y) {
        const float here = _height.nearest(x, y);
        const float d = SampleDistance({x, y}, _volcano) / kVolcanoRadius;
        if (d >= 1 || _sea.nearest(x, y))
            return here;
        const float cone = (1 - d) * (1 - d) * (1.0f + 0.25f * _detail.layered(x / 12, y / 12, 3));
        const float crater = SampleStep(0.10f, 0.02f, d);
        const float shore = SampleStep(0.0f, 0.03f, _coast.linear(x, y));
        return here * SampleStep(0.0f, 0.6f, d) + shore * (620 * cone - 190 * crater) + 1;
    });
}

/// Presses hollows into the lowlands, to be filled by the rivers that meet them.
void SampleLandform::sinkLakes(std::uint64_t seed) {
    SampleRandom random(SampleHash(seed, 5));
    int wanted = 22;
    for (int tries = 0; tries < 4000 && wanted > 0; ++tries) {
        const SamplePoint centre = {static_cast<float>(random.range(100, 1900)),
                                    static_cast<float>(random.range(100, 1900))};
        const double share = random.unit();
        const float radius = static_cast<float>(8 + 34 * share * random.unit());
        if (_coast.linear(centre.x, centre.y) < 0.10f + radius * 0.001f ||
            _height.linear(centre.x, centre.y) > 130 ||
            SampleDistance(centre, _volcano) < kVolcanoRadius + radius)
            continue;
        --wanted;
        const int reach = static_cast<int>(radius * 2) / kFine;
        const int cx = static_cast<int>(centre.x) / kFine, cy = static_cast<int>(centre.y) / kFine;
        for (int y = cy - reach; y <= cy + reach; ++y)
            for (int x = cx - reach; x <= cx + reach; ++x) {
                if (!_height.contains(x, y) || _sea(x, y))
                    continue;
                const float px = static_cast<float>(x * kFine), py = static_cast<float>(y * kFine);
                const float shore = radius * (1 + 0.7f * _detail.layered(px / 26, py / 26, 3));
                const float d = SampleDistance({px, py}, centre) / shore;
                _height(x, y) -= 22 * SampleStep(1.0f, 0.35f, d);
                _height(x, y) = std::max(_height(x, y), 0.5f);
            }
    }
}

/// Keeps the greater hollows as lakes and levels the rest.
void SampleLandform::fillHollows() {
    _flow = SampleRouteFlow(_height, _sea);
    SampleGrid<std::uint8_t> seen(kFine);
    for (std::size_t start = 0; start < _height.size(); ++start) {
        const auto isWet = [&](std::size_t i) { return _flow.surface[i] > _height[i] + 0.3f; };
        if (seen[start] || _sea[start] || !isWet(start))
            continue;
        std::vector<std::size_t> lake = {start};
        seen[start] = 1;
        for (std::size_t k = 0; k < lake.size(); ++k) {
            const int x = static_cast<int>(lake[k]) % _height.side();
            const int y = static_cast<int>(lake[k]) / _height.side();
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    if (!_height.contains(x + dx, y + dy))
                        continue;
                    const std::size_t other = _height.index(x + dx, y + dy);
                    if (!seen[other] && !_sea[other] && isWet(other)) {
                        seen[other] = 1;
                        lake.push_back(other);
                    }
                }
        }
        if (lake.size() >= 30)
            for (const std::size_t i : lake)
                _lakeDepth[i] = _flow.surface[i] - _height[i];
    }
    for (std::size_t i = 0; i < _height.size(); ++i)
        if (!_sea[i])
            _height[i] = std::max(_height[i], _flow.surface[i]);
}

SamplePoint SampleLandform::bent(float x, float y) const {
    return {x + 4.0f * _bend.layered(x / 21, y / 21, 2),
            y + 4.0f * _bend.layered(x / 21 + 57, y / 21 - 39, 2)};
}

float SampleLandform::coastAt(float x, float y) const {
    const SamplePoint p = bent(x, y);
    return _coast.cubic(p.x, p.y) + 0.012f * _detail.layered(x / 7, y / 7, 2);
}

float SampleLandform::heightAt(float x, float y) const {
    const SamplePoint p = bent(x, y);
    return _height.cubic(p.x, p.y);
}
