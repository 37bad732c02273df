#include "sample/SampleRoads.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <queue>

namespace {

constexpr int kSpacing = 4;
constexpr float kImpassable = 1e9f;
/// What a step on a road costs, beside one on level open ground.
constexpr float kRoadCost = 0.4f;

/// Finds ways over the land and remembers the roads laid so far.
class RoadFinder {
  public:
    RoadFinder(const SampleLandform &landform, const SampleRivers &rivers)
        : _height(kSpacing), _cost(kSpacing), _spent(kSpacing), _from(kSpacing) {
        const SampleNoise wander(1);
        for (int y = 0; y < _cost.side(); ++y)
            for (int x = 0; x < _cost.side(); ++x) {
                const float px = static_cast<float>(x * kSpacing),
                            py = static_cast<float>(y * kSpacing);
                _height(x, y) = landform.height().linear(px, py);
                const bool wet =
                    landform.sea().nearest(px, py) || landform.coastAt(px, py) < 0.006f ||
                    landform.lakeDepth().nearest(px, py) > 0 ||
                    SampleDistance({px, py}, landform.volcano()) < SampleLandform::kVolcanoRadius;
                // Ground that is dearer here and there keeps roads across plains from being
                // straight.
                const float ground = 1 + 1.6f * std::fabs(wander.layered(px / 44, py / 44, 3));
                _cost(x, y) =
                    wet ? kImpassable
                        : ground + 3 * SampleStep(2500, 30000, rivers.dischargeAt(px, py));
            }
    }

    /// The cheapest way as places of the map, start and end included; empty when there is none.
    std::vector<SamplePoint> findWay(SamplePoint from, SamplePoint to) {
        const int goal = cellAt(to), start = cellAt(from);
        std::fill(&_spent[0], &_spent[0] + _spent.size(), std::numeric_limits<float>::max());
        std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, std::greater<>> open;
        _spent[at(start)] = 0;
        open.push(key(0, start));
        while (!open.empty()) {
            const int cell = static_cast<int>(open.top() & 0xFFFFFFFF);
            const float expected =
                std::bit_cast<float>(static_cast<std::uint32_t>(open.top() >> 32));
            open.pop();
            if (cell == goal)
                break;
            if (expected > _spent[at(cell)] + estimate(cell, goal) + 1e-3f)
                continue;
            visitNeighbours(cell, goal, open);
        }
        if (_spent[at(goal)] == std::numeric_limits<float>::max())
            return {};
        std::vector<SamplePoint> way = {to};
        for (int cell = goal; cell != start; cell = _from[at(cell)]) {
            if (_cost[at(cell)] < kImpassable)
                _cost[at(cell)] = kRoadCost;
            if (cell != goal)
                way.push_back(placeOf(cell));
        }
        way.push_back(from);
        return way;
    }

    /// A number for the land that a place stands on, the same for all places that ways can join.
    int landMassAt(SamplePoint place) {
        const int start = cellAt(place);
        if (_landMass[at(start)] == 0)
            floodLandMass(start, ++_landMasses);
        return _landMass[at(start)];
    }

    /// The place by the sea that lies farthest from a town on the same land, within a day's walk.
    std::optional<SamplePoint> farthestLanding(SamplePoint town) {
        constexpr float kADaysWalk = 220;
        const int landMass = landMassAt(town);
        std::optional<SamplePoint> farthest;
        float most = 0;
        for (int cell = 0; cell < static_cast<int>(_cost.size()); ++cell)
            if (const float distance = SampleDistance(placeOf(cell), town);
                _landMass[at(cell)] == landMass && distance > most && distance < kADaysWalk &&
                isByWater(cell)) {
                most = distance;
                farthest = placeOf(cell);
            }
        return farthest;
    }

  private:
    using Queue = std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, std::greater<>>;

    static std::size_t at(int cell) { return static_cast<std::size_t>(cell); }
    static std::uint64_t key(float cost, int cell) {
        return (std::uint64_t{std::bit_cast<std::uint32_t>(cost)} << 32) |
               static_cast<std::uint32_t>(cell);
    }
    int cellAt(SamplePoint place) const {
        return static_cast<int>(place.y / kSpacing + 0.5f) * _cost.side() +
               static_cast<int>(place.x / kSpacing + 0.5f);
    }
    SamplePoint placeOf(int cell) const {
        return {static_cast<float>(cell % _cost.side() * kSpacing),
                static_cast<float>(cell / _cost.side() * kSpacing)};
    }
    float estimate(int cell, int goal) const {
        return kRoadCost / kSpacing * SampleDistance(placeOf(cell), placeOf(goal));
    }

    bool isOpen(int x, int y) const { return _cost.contains(x, y) && _cost(x, y) < kImpassable; }

    bool isByWater(int cell) const {
        const int x = cell % _cost.side(), y = cell / _cost.side();
        return !isOpen(x - 1, y) || !isOpen(x + 1, y) || !isOpen(x, y - 1) || !isOpen(x, y + 1);
    }

    void floodLandMass(int start, int number) {
        std::vector<int> open = {start};
        _landMass[at(start)] = number;
        while (!open.empty()) {
            const int x = open.back() % _cost.side(), y = open.back() / _cost.side();
            open.pop_back();
            for (int ny = y - 1; ny <= y + 1; ++ny)
                for (int nx = x - 1; nx <= x + 1; ++nx)
                    if (isOpen(nx, ny) && _landMass(nx, ny) == 0) {
                        _landMass(nx, ny) = number;
                        open.push_back(ny * _cost.side() + nx);
                    }
        }
    }

    void visitNeighbours(int cell, int goal, Queue &open) {
        const int side = _cost.side();
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const int x = cell % side + dx, y = cell / side + dy;
                if ((dx == 0 && dy == 0) || !_cost.contains(x, y))
                    continue;
                const int other = y * side + x;
                // A town may touch the water; its own cell is always open.
                if (_cost[at(other)] >= kImpassable && other != goal)
                    continue;
                const float length = dx != 0 && dy != 0 ? 1.4142f : 1.0f;
                const float climb =
                    std::fabs(_height[at(other)] - _height[at(cell)]) / (length * kSpacing);
                const float ground = other == goal ? kRoadCost : _cost[at(other)];
                const float spent =
                    _spent[at(cell)] + length * (ground + 0.22f * climb + 0.05f * climb * climb);
                if (spent < _spent[at(other)]) {
                    _spent[at(other)] = spent;
                    _from[at(other)] = cell;
                    open.push(key(spent + estimate(other, goal), other));
                }
            }
    }

    SampleGrid<float> _height, _cost, _spent;
    SampleGrid<int> _from;
    /// 0 where nobody asked yet.
    SampleGrid<int> _landMass{kSpacing};
    int _landMasses = 0;
};

/// Pairs of towns of one land to join: a tree of the shortest distances, then pairs that are close
/// anyway.
std::vector<std::pair<std::size_t, std::size_t>> pairsToJoin(const std::vector<SampleTown> &towns) {
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    std::vector<std::size_t> joined = {0};
    while (joined.size() < towns.size()) {
        float shortest = kImpassable;
        std::pair<std::size_t, std::size_t> best;
        for (const std::size_t a : joined)
            for (std::size_t b = 0; b < towns.size(); ++b) {
                if (std::find(joined.begin(), joined.end(), b) != joined.end())
                    continue;
                const float distance = SampleDistance(towns[a].centre(), towns[b].centre());
                if (distance < shortest) {
                    shortest = distance;
                    best = {a, b};
                }
            }
        pairs.push_back(best);
        joined.push_back(best.second);
    }
    constexpr float kClose = 380;
    for (std::size_t a = 0; a < towns.size(); ++a)
        for (std::size_t b = a + 1; b < towns.size(); ++b)
            if (SampleDistance(towns[a].centre(), towns[b].centre()) < kClose)
                pairs.push_back({a, b});
    return pairs;
}

void markPoint(SampleTerrain &terrain, float x, float y) {
    const int px = static_cast<int>(x + 0.5f), py = static_cast<int>(y + 0.5f);
    if (!terrain.land.contains(px, py))
        return;
    const SampleLand land = terrain.land(px, py);
    const bool isBridge = land == SampleLand::runningWater || land == SampleLand::fauxRunningWater;
    if (!SampleTerrain::isWater(land) || isBridge)
        terrain.road(px, py) = 1;
}

void drawRoad(SampleTerrain &terrain, std::vector<SamplePoint> way) {
    for (int round = 0; round < 3; ++round) {
        std::vector<SamplePoint> cut = {way.front()};
        for (std::size_t i = 0; i + 1 < way.size(); ++i)
            for (const float t : {0.25f, 0.75f})
                cut.push_back({way[i].x + (way[i + 1].x - way[i].x) * t,
                               way[i].y + (way[i + 1].y - way[i].y) * t});
        cut.push_back(way.back());
        way = std::move(cut);
    }
    // The ways were found along eight directions; nobody builds like that.
    const SampleNoise sway(2);
    for (std::size_t i = 1; i + 1 < way.size(); ++i) {
        const SamplePoint p = way[i];
        way[i] = {p.x + 3.5f * sway.layered(p.x / 24, p.y / 24, 2),
                  p.y + 3.5f * sway.layered(p.x / 24 + 43, p.y / 24 + 71, 2)};
    }
    for (std::size_t i = 0; i + 1 < way.size(); ++i) {
        const int steps = 1 + static_cast<int>(2 * SampleDistance(way[i], way[i + 1]));
        for (int s = 0; s <= steps; ++s) {
            const float t = static_cast<float>(s) / static_cast<float>(steps);
            markPoint(terrain, way[i].x + (way[i + 1].x - way[i].x) * t,
                      way[i].y + (way[i + 1].y - way[i].y) * t);
        }
    }
}

} // namespace

void SampleBuildRoads(SampleTerrain &terrain, const std::vector<SampleTown> &towns,
                      const SampleLandform &landform, const SampleRivers &rivers) {
    RoadFinder finder(landform, rivers);
    const auto build = [&](SamplePoint from, SamplePoint to) {
        if (const std::vector<SamplePoint> way = finder.findWay(from, to); !way.empty())
            drawRoad(terrain, way);
    };
    std::map<int, std::vector<SampleTown>> townsByLandMass;
    for (const SampleTown &town : towns)
        townsByLandMass[finder.landMassAt(town.centre())].push_back(town);
    for (const auto &[landMass, neighbours] : townsByLandMass) {
        for (const auto &[a, b] : pairsToJoin(neighbours))
            build(neighbours[a].centre(), neighbours[b].centre());
        // A town that is alone on its island has a road to where the boats land.
        if (neighbours.size() == 1)
            if (const auto landing = finder.farthestLanding(neighbours.front().centre()))
                build(neighbours.front().centre(), *landing);
    }
}
