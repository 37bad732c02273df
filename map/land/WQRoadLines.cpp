#include "map/land/WQRoadLines.h"

#include <algorithm>
#include <array>

namespace {

struct Step {
    int columns, rows;
};
/// Each direction and, four places on, the way back.
constexpr std::array<Step, 8> kSteps = {
    {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}}};
constexpr std::size_t kBack = 4;

class RoadTracer {
  public:
    explicit RoadTracer(const WQLandGrid &grid)
        : _grid(grid), _links(std::size_t{WQLandGrid::kSize} * WQLandGrid::kSize) {
        forEachRoadPoint([&](WQLandPlace place) { linksAt(place) = findLinks(place); });
    }

    std::vector<std::vector<WQLandPlace>> trace() {
        const auto followAllFrom = [&](WQLandPlace place) {
            for (std::size_t direction = 0; direction < kSteps.size(); ++direction)
                if ((linksAt(place) >> direction & 1) != 0)
                    follow(place, direction);
        };
        std::vector<WQLandPlace> ends;
        forEachRoadPoint([&](WQLandPlace place) {
            if (linksAt(place) == 0)
                _lines.push_back({place});
            else if (__builtin_popcount(linksAt(place)) != 2)
                ends.push_back(place);
        });
        _isEnd.assign(_links.size(), false);
        for (const WQLandPlace place : ends)
            _isEnd[indexOf(place)] = true;
        std::ranges::for_each(ends, followAllFrom);
        // What is left are rings.
        forEachRoadPoint(followAllFrom);
        return std::move(_lines);
    }

  private:
    static std::size_t indexOf(WQLandPlace place) {
        return place.row * std::size_t{WQLandGrid::kSize} + place.column;
    }
    /// A bit for each direction that was not followed yet.
    std::uint8_t &linksAt(WQLandPlace place) { return _links[indexOf(place)]; }

    static WQLandPlace next(WQLandPlace place, std::size_t direction) {
        const Step step = kSteps[direction];
        return {place.column + static_cast<unsigned>(step.columns),
                place.row + static_cast<unsigned>(step.rows)};
    }
    bool isRoad(WQLandPlace place) const {
        constexpr unsigned kRoadBits = 3;
        return place.column < WQLandGrid::kSize && place.row < WQLandGrid::kSize &&
               (_grid.at(place.column, place.row).terrainWord & kRoadBits) != 0;
    }

    template <class Action>
    void forEachRoadPoint(Action action) {
        for (unsigned row = 0; row < WQLandGrid::kSize; ++row)
            for (unsigned column = 0; column < WQLandGrid::kSize; ++column)
                if (isRoad({column, row}))
                    action(WQLandPlace{column, row});
    }

    /// To all sides, but across a corner only where the road does not go round it.
    std::uint8_t findLinks(WQLandPlace place) const {
        unsigned links = 0;
        for (std::size_t direction = 0; direction < kSteps.size(); ++direction) {
            const bool isDiagonal = direction % 2 == 1;
            const bool goesRound = isDiagonal && (isRoad(next(place, direction - 1)) ||
                                                  isRoad(next(place, (direction + 1) % 8)));
            if (!goesRound && isRoad(next(place, direction)))
                links |= 1u << direction;
        }
        return static_cast<std::uint8_t>(links);
    }

    void follow(WQLandPlace place, std::size_t direction) {
        std::vector<WQLandPlace> line = {place};
        const WQLandPlace start = place;
        for (;;) {
            const std::size_t back = (direction + kBack) % kSteps.size();
            linksAt(place) = static_cast<std::uint8_t>(linksAt(place) & ~(1u << direction));
            place = next(place, direction);
            linksAt(place) = static_cast<std::uint8_t>(linksAt(place) & ~(1u << back));
            if (_isEnd[indexOf(place)] || place == start || linksAt(place) == 0)
                break;
            const auto turn = static_cast<std::size_t>(__builtin_ctz(linksAt(place)));
            if (turn != direction)
                line.push_back(place);
            direction = turn;
        }
        line.push_back(place);
        _lines.push_back(std::move(line));
    }

    const WQLandGrid &_grid;
    std::vector<std::uint8_t> _links;
    std::vector<bool> _isEnd;
    std::vector<std::vector<WQLandPlace>> _lines;
};

} // namespace

std::vector<std::vector<WQLandPlace>> WQTraceRoads(const WQLandGrid &grid) {
    return RoadTracer(grid).trace();
}
