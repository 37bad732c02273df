#include "sample/SampleTowns.h"

#include "io/ZPSystemLog.h"
#include "sample/SampleNames.h"
#include "sample/SampleRandom.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr std::size_t kMostTowns = 16;
constexpr float kLeastDistance = 165;

struct Candidate {
    float x, y, worth;
    bool isPort;
};

/// How gladly people live there; below 0 not at all.
float worthOf(const Candidate &place, const SampleLandform &landform, const SampleClimate &climate,
              const SampleRivers &rivers) {
    const auto &height = landform.height();
    const float ground = height.linear(place.x, place.y);
    float roughness = 0;
    for (const auto &[dx, dy] : {std::pair{8.0f, 0.0f}, {-8.0f, 0.0f}, {0.0f, 8.0f}, {0.0f, -8.0f}})
        roughness =
            std::max(roughness, std::fabs(height.linear(place.x + dx, place.y + dy) - ground));
    const float warmth = climate.warmthAt(place.x, place.y) - 0.0006f * ground;
    if (landform.coastAt(place.x, place.y) < 0.015f || roughness > 16 || warmth < 0.17f ||
        landform.lakeDepth().linear(place.x, place.y) > 0 ||
        SampleDistance({place.x, place.y}, landform.volcano()) < 95)
        return -1;
    float water = 0;
    for (float dx = -8; dx <= 8; dx += 2)
        for (float dy = -8; dy <= 8; dy += 2)
            water = std::max(water, rivers.dischargeAt(place.x + dx, place.y + dy));
    return 1.2f - 0.04f * roughness + (place.isPort ? 0.35f : 0.0f) +
           0.9f * SampleStep(1500, 20000, water) + 0.5f * climate.wetnessAt(place.x, place.y);
}

/// Whether the sea is a short walk away.
bool isByTheSea(float x, float y, const SampleLandform &landform) {
    for (const auto &[dx, dy] :
         {std::pair{14.0f, 0.0f}, {-14.0f, 0.0f}, {0.0f, 14.0f}, {0.0f, -14.0f}})
        if (landform.sea().nearest(x + dx, y + dy))
            return true;
    return false;
}

} // namespace

std::vector<SampleTown> SampleSettleTowns(std::uint64_t seed, const SampleLandform &landform,
                                          const SampleClimate &climate,
                                          const SampleRivers &rivers) {
    SampleRandom random(SampleHash(seed, 30));
    std::vector<Candidate> candidates;
    for (int i = 0; i < 5000; ++i) {
        Candidate place = {static_cast<float>(random.range(60, 1980)),
                           static_cast<float>(random.range(60, 1980)), 0, false};
        place.isPort = isByTheSea(place.x, place.y, landform);
        place.worth = worthOf(place, landform, climate, rivers);
        if (place.worth < 0)
            continue;
        // Chance has its say, or all towns would crowd along the greatest river.
        place.worth += static_cast<float>(random.range(0, 1.6));
        candidates.push_back(place);
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate &a, const Candidate &b) { return a.worth > b.worth; });

    std::vector<std::string> names = SampleNamesOfPlaces(seed, kMostTowns);
    std::vector<SampleTown> towns;
    for (const Candidate &place : candidates) {
        const bool isApart = std::none_of(towns.begin(), towns.end(), [&](const SampleTown &town) {
            return SampleDistance(town.centre(), {place.x, place.y}) < kLeastDistance;
        });
        if (!isApart)
            continue;
        towns.push_back({std::move(names[towns.size()]), place.isPort, static_cast<int>(place.x),
                         static_cast<int>(place.y)});
        if (towns.size() == kMostTowns)
            break;
    }
    return towns;
}

void SamplePaintTowns(SampleTerrain &terrain, const std::vector<SampleTown> &towns,
                      std::uint64_t seed) {
    const SampleNoise noise(SampleHash(seed, 31));
    for (const SampleTown &town : towns)
        for (int y = town.y - SampleTownRadius; y <= town.y + SampleTownRadius; ++y)
            for (int x = town.x - SampleTownRadius; x <= town.x + SampleTownRadius; ++x) {
                if (!terrain.land.contains(x, y) || SampleTerrain::isWater(terrain.land(x, y)))
                    continue;
                const SamplePoint here = {static_cast<float>(x), static_cast<float>(y)};
                const float d =
                    SampleDistance(here, town.centre()) + 3 * noise.at(here.x / 4, here.y / 4);
                if (d < 4.5f)
                    terrain.land(x, y) = SampleLand::packedDirt;
                else if (d < 7.5f)
                    terrain.land(x, y) = SampleLand::patchyDirt;
            }
}

std::string SamplePlotFile(const std::vector<SampleTown> &towns) {
    std::string text;
    for (const SampleTown &town : towns) {
        const double x = town.x * 0.1 - 101.9, y = town.y * 0.1 - 101.9;
        text += ZPFormat("%s;%.1f%c %.1f%c;%s\n", town.isPort ? "port" : "town", std::fabs(y),
                         y < 0 ? 'S' : 'N', std::fabs(x), x < 0 ? 'W' : 'E', town.name.c_str());
    }
    return text;
}
