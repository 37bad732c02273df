#include "sample/SamplePlan.h"

#include "sample/SampleNoise.h"
#include "sample/SampleRandom.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace {

constexpr float kNearestToEdge = 330;
constexpr float kFarthestFromEdge = 1710;
constexpr int kTries = 400;

/// Draws the features one after another, each with regard to those before it.
class Planner {
  public:
    explicit Planner(std::uint64_t seed) : _random(SampleHash(seed, 4)) {}

    SamplePlan makePlan() {
        const std::uint32_t lobes = 4 + _random.below(3);
        const std::size_t first =
            growContinent({between(520, 1000), between(720, 1320)}, lobes, 380, 500);
        raiseRanges(first, 54, 1.0f);
        if (const auto place = farthestPlace(300)) {
            const std::size_t second = growContinent(*place, 1 + _random.below(3), 200, 300);
            raiseRanges(second, 42, 0.7f);
        }
        for (auto islands = 4 + _random.below(4); islands > 0; --islands)
            if (const auto place = farthestPlace(150))
                _plan.lobes.push_back({*place, between(70, 150), between(70, 150)});
        return std::move(_plan);
    }

  private:
    float between(double low, double high) { return static_cast<float>(_random.range(low, high)); }

    /// A vector of length 1. Without trigonometry, which differs from machine to machine.
    SamplePoint direction() {
        for (;;) {
            const SamplePoint way = {between(-1, 1), between(-1, 1)};
            const float length = SampleDistance(way, {});
            if (length > 0.1f && length <= 1)
                return {way.x / length, way.y / length};
        }
    }

    static bool isInside(SamplePoint place) {
        const auto fits = [](float value) {
            return value > kNearestToEdge && value < kFarthestFromEdge;
        };
        return fits(place.x) && fits(place.y) && SampleOpenCorner(place.x + 90, place.y + 90) == 0;
    }

    /// How far a place lies from the rim of the nearest lobe.
    float distanceToLand(SamplePoint place) const {
        float nearest = 1e9f;
        for (const SamplePlan::Lobe &lobe : _plan.lobes)
            nearest = std::min(nearest, SampleDistance(place, lobe.centre) -
                                            std::max(lobe.width, lobe.height));
        return nearest;
    }

    /// Adds lobes that overlap, each beside an earlier one of the same continent, and gives the
    /// index of the first.
    std::size_t growContinent(SamplePoint start, std::uint32_t count, double least, double most) {
        const std::size_t first = _plan.lobes.size();
        _plan.lobes.push_back({start, between(least, most), between(least * 0.8, most * 0.9)});
        for (int tries = 0; tries < kTries && _plan.lobes.size() < first + count; ++tries) {
            const auto own = static_cast<std::uint32_t>(_plan.lobes.size() - first);
            const SamplePoint from = _plan.lobes[first + _random.below(own)].centre;
            const SamplePoint way = direction();
            const float step = between(least * 0.95, most * 1.05);
            const SamplePoint place = {from.x + step * way.x, from.y + step * way.y};
            const bool isApart = std::all_of(
                _plan.lobes.begin(), _plan.lobes.end(), [&](const SamplePlan::Lobe &lobe) {
                    return SampleDistance(lobe.centre, place) > 0.8f * static_cast<float>(least);
                });
            if (isApart && isInside(place))
                _plan.lobes.push_back(
                    {place, between(least * 0.7, most), between(least * 0.6, most * 0.9)});
        }
        return first;
    }

    /// Joins the lobes from `first` on by mountains, as their land was thrown up by them.
    void raiseRanges(std::size_t first, float width, float strength) {
        const auto &lobes = _plan.lobes;
        for (std::size_t i = first + 1; i < lobes.size(); ++i) {
            const auto nearest =
                std::min_element(lobes.begin() + static_cast<std::ptrdiff_t>(first),
                                 lobes.begin() + static_cast<std::ptrdiff_t>(i),
                                 [&](const SamplePlan::Lobe &a, const SamplePlan::Lobe &b) {
                                     return SampleDistance(a.centre, lobes[i].centre) <
                                            SampleDistance(b.centre, lobes[i].centre);
                                 });
            addRange(nearest->centre, lobes[i].centre, width, strength);
        }
        if (lobes.size() == first + 1) {
            const auto &[centre, w, h] = lobes[first];
            addRange({centre.x - 0.5f * w, centre.y}, {centre.x + 0.5f * w, centre.y}, width,
                     strength);
        }
    }

    void addRange(SamplePoint from, SamplePoint to, float width, float strength) {
        constexpr int kPoints = 5;
        SamplePlan::Range range{{}, width * between(0.75, 1.2), strength * between(0.6, 1.05)};
        // Off the line from centre to centre to one side, or every range would end in a star.
        const float side = between(-0.3, 0.3);
        const SamplePoint across = {side * (from.y - to.y), side * (to.x - from.x)};
        for (int i = 0; i < kPoints; ++i) {
            const float t = -0.1f + 1.2f * static_cast<float>(i) / (kPoints - 1);
            const float bow = 1 - (2 * t - 1) * (2 * t - 1);
            range.crest.push_back(
                {from.x + t * (to.x - from.x) + bow * across.x + between(-45, 45),
                 from.y + t * (to.y - from.y) + bow * across.y + between(-45, 45)});
        }
        _plan.ranges.push_back(std::move(range));
    }

    /// The best of some places away from all land; nothing where the sea is too narrow.
    std::optional<SamplePoint> farthestPlace(float leastDistance) {
        std::optional<SamplePoint> best;
        for (int tries = 0; tries < 24; ++tries) {
            const SamplePoint place = {between(230, 1810), between(230, 1810)};
            if (const float distance = distanceToLand(place);
                distance > leastDistance && SampleOpenCorner(place.x + 120, place.y + 120) == 0) {
                leastDistance = distance;
                best = place;
            }
        }
        return best;
    }

    SampleRandom _random;
    SamplePlan _plan;
};

} // namespace

float SampleOpenCorner(float x, float y) {
    return std::min(SampleStep(1480, 1700, x), SampleStep(1240, 1420, y));
}

SamplePlan SampleMakePlan(std::uint64_t seed) {
    return Planner(seed).makePlan();
}
