#pragma once

#include "map/land/WQLandGrid.h"

#include <vector>

/// A land point, counted from the south-western corner of the world.
struct WQLandPlace {
    unsigned column, row;
    bool operator==(const WQLandPlace &) const = default;
};

/// The land's roads as lines from one end or crossing to the next; a ring ends where it begins.
/// Points in a straight row are left out. A road of a single point is a line of one.
[[nodiscard]] std::vector<std::vector<WQLandPlace>> WQTraceRoads(const WQLandGrid &grid);
