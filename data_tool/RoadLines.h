#pragma once

#include "map/land/WQLandGrid.h"

#include <vector>

/// A land point, counted from the south-western corner of the world.
struct LandPlace {
    unsigned column, row;
    bool operator==(const LandPlace &) const = default;
};

/// The land's roads as lines from one end or crossing to the next; a ring ends where it begins.
/// Points in a straight row are left out. A road of a single point is a line of one.
[[nodiscard]] std::vector<std::vector<LandPlace>> traceRoads(const WQLandGrid &grid);
