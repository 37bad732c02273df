#pragma once

#include "sample/SampleGrid.h"

#include <array>
#include <cstdint>

/// Terrain codes as land blocks store them; 0 to 31, in the order of the region record's land
/// types.
enum class SampleLand : std::uint8_t {
    barrenRock,
    grassland,
    ice,
    lushGrass,
    marshSparseSwamp,
    mudRichDirt,
    obsidianPlain,
    packedDirt,
    patchyDirt,
    patchyGrassland,
    yellowSand,
    greySand,
    rockStrewnSand,
    sedimentaryRock,
    semiBarrenRock,
    snow,
    runningWater,
    freshStandingWater,
    shallowSea,
    shallowStillSea,
    deepSea,
    forestFloor,
    fauxRunningWater,
    seaSlime,
    argila,
    volcano1,
    volcano2,
    blueIce,
    moss,
    darkMoss,
    vorrik,
    desolateLands
};
inline constexpr int SampleLandCount = 32;

/// What the world's 256 height indexes stand for: fine steps in the lowlands, ever greater ones
/// toward the peaks.
const std::array<float, 256> &SampleLandHeights();
/// The index of the greatest table height that is not above `height`.
std::uint8_t SampleHeightIndex(float height);

/// Index of the sea's surface; the sea floor lies below it, land above.
inline constexpr std::uint8_t SampleSeaLevelIndex = 12;

struct SampleTerrain {
    SampleGrid<SampleLand> land{1};
    SampleGrid<std::uint8_t> height{1};
    /// Road bits of the terrain word, 0 to 3.
    SampleGrid<std::uint8_t> road{1};

    static bool isWater(SampleLand land) {
        return (land >= SampleLand::runningWater && land <= SampleLand::deepSea) ||
               land == SampleLand::fauxRunningWater || land == SampleLand::seaSlime;
    }
};
