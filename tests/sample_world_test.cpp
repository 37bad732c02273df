// What the sample worlds promise: another seed is another world, and people live by roads.

#include "sample/SampleWorld.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace {

/// Whether a road comes near the middle of the town.
bool hasRoad(const SampleWorld &world, const SampleTown &town) {
    for (int y = town.y - SampleTownRadius; y <= town.y + SampleTownRadius; ++y)
        for (int x = town.x - SampleTownRadius; x <= town.x + SampleTownRadius; ++x)
            if (world.terrain().road.contains(x, y) && world.terrain().road(x, y) != 0)
                return true;
    return false;
}

/// Of a coarse raster of places, which are land.
std::vector<bool> landOf(const SampleWorld &world) {
    std::vector<bool> land;
    for (int y = 10; y < SamplePointsPerSide; y += 20)
        for (int x = 10; x < SamplePointsPerSide; x += 20)
            land.push_back(!SampleTerrain::isWater(world.terrain().land(x, y)));
    return land;
}

} // namespace

TEST(SampleWorld, SeedsGiveWorldsOfTheirOwnWithRoadsToEveryTown) {
    std::vector<std::vector<bool>> plans;
    std::set<std::string> names;
    std::size_t townCount = 0;
    for (const std::uint64_t seed : {3u, 4u, 5u}) {
        SampleOptions options;
        options.seed = seed;
        options.cells = 100;
        const SampleWorld world(options);
        EXPECT_GE(world.towns().size(), 8u);
        for (const SampleTown &town : world.towns()) {
            EXPECT_TRUE(hasRoad(world, town)) << town.name << " of seed " << seed;
            names.insert(town.name);
        }
        townCount += world.towns().size();
        plans.push_back(landOf(world));
        // Land enough to be worth a map, sea enough for its title.
        const auto land = std::ranges::count(plans.back(), true);
        EXPECT_GT(land * 100, static_cast<long>(plans.back().size()) * 20);
        EXPECT_LT(land * 100, static_cast<long>(plans.back().size()) * 65);
    }
    EXPECT_GT(names.size() * 10, townCount * 8);

    // The same plan with nudged coasts would differ in a few places in a hundred.
    for (std::size_t other = 1; other < plans.size(); ++other) {
        long differences = 0;
        for (std::size_t place = 0; place < plans[0].size(); ++place)
            differences += plans[0][place] != plans[other][place];
        EXPECT_GT(differences * 100, static_cast<long>(plans[0].size()) * 15) << other;
    }
}
