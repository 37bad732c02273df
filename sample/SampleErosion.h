#pragma once

#include "sample/SampleGrid.h"

#include <cstdint>
#include <vector>

/// Where the water of every grid point goes.
struct SampleFlow {
    /// Land points, each after the point that it drains into.
    std::vector<std::uint32_t> order;
    /// The neighbour that takes a point's water; the point itself in the sea.
    SampleGrid<std::uint32_t> receiver;
    /// Height of the water surface: the land's own, or the rim of the hollow that a point lies in.
    SampleGrid<float> surface;

    explicit SampleFlow(int spacing) : receiver(spacing), surface(spacing) {}

    /// Adds up `rain` (0 in the sea) along the ways of the water.
    SampleGrid<float> discharge(const SampleGrid<float> &rain) const;
};

/// Fills every hollow to its rim from the sea inward and lets each point drain to its steepest
/// neighbour. `sea` is 1 where the water ends; heights are 0 there and above 0 on land.
SampleFlow SampleRouteFlow(const SampleGrid<float> &height, const SampleGrid<std::uint8_t> &sea);

struct SampleErosionSettings {
    int steps = 1;
    /// How far one step goes; large steps reach the balance of uplift and erosion sooner.
    float stepLength = 1;
    float erodibility = 1;
    /// Share of the difference to the neighbours' mean that a step levels out.
    float creep = 0;
};

/// Lets rivers cut into rising land: height gains `uplift` and loses erodibility x sqrt(area) x
/// slope, solved from the sea upward so that steps of any length stay stable.
void SampleErode(SampleGrid<float> &height, const SampleGrid<std::uint8_t> &sea,
                 const SampleGrid<float> &uplift, const SampleErosionSettings &settings);
