#pragma once

#include "sample/SampleLandform.h"
#include "sample/SampleRivers.h"
#include "sample/SampleTerrain.h"
#include "sample/SampleTowns.h"

#include <vector>

/// Joins the towns of each land mass with roads that shun slopes and share their way, one that has
/// no neighbour with the shore, and marks their land points. Rivers are bridged; no road enters
/// lakes or the sea.
void SampleBuildRoads(SampleTerrain &terrain, const std::vector<SampleTown> &towns,
                      const SampleLandform &landform, const SampleRivers &rivers);
