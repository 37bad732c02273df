#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

/// A place given in land points.
struct SamplePoint {
    float x = 0, y = 0;
};

inline float SampleDistance(SamplePoint a, SamplePoint b) {
    const float dx = a.x - b.x, dy = a.y - b.y;
    return std::sqrt(dx * dx + dy * dy);
}

/// Where a world's great features lie, before noise bends them. Everything is in land points.
struct SamplePlan {
    /// An ellipse of land.
    struct Lobe {
        SamplePoint centre;
        float width, height; // from the centre to the rim
    };
    /// A range of mountains along a line.
    struct Range {
        std::vector<SamplePoint> crest;
        float width, strength;
    };

    std::vector<Lobe> lobes;
    std::vector<Range> ranges;
};

/// Whether a place belongs to the open sea in the north-east, where the map's title and compass
/// stand; 0 no, 1 yes, and a slope between.
float SampleOpenCorner(float x, float y);

/// Another plan for every seed: a continent or two, islands, and ranges along them.
SamplePlan SampleMakePlan(std::uint64_t seed);
