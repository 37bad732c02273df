#pragma once

#include "sample/SampleClimate.h"
#include "sample/SampleLandform.h"
#include "sample/SampleRivers.h"
#include "sample/SampleTerrain.h"

#include <cstdint>
#include <string>
#include <vector>

struct SampleTown {
    std::string name; // UTF-8
    bool isPort;
    int x, y; // land point at its centre

    SamplePoint centre() const { return {static_cast<float>(x), static_cast<float>(y)}; }
};

/// Land points around a town's centre that belong to it.
inline constexpr int SampleTownRadius = 10;

/// Settles the world where people would: on level, mild ground by a river or the sea, apart from
/// each other.
std::vector<SampleTown> SampleSettleTowns(std::uint64_t seed, const SampleLandform &landform,
                                          const SampleClimate &climate, const SampleRivers &rivers);

/// Treads the ground of each town to dirt.
void SamplePaintTowns(SampleTerrain &terrain, const std::vector<SampleTown> &towns,
                      std::uint64_t seed);

/// The towns as a plot file, "type;coord;label" a line.
std::string SamplePlotFile(const std::vector<SampleTown> &towns);
