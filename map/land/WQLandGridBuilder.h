#pragma once

#include "game/WQClientData.h"
#include "game/WQDataFileComparison.h"
#include "map/land/WQLandGrid.h"

/// How many of the cell archive's files are of these kinds.
struct WQLandCounts {
    std::uint32_t landBlocks = 0;
    std::uint32_t objectBlocks = 0;
    /// The land blocks that could be read and lie in the world.
    std::uint32_t drawnBlocks = 0;
    std::uint32_t unreadBlocks = 0;

    /// That land blocks could not be read, in a line for the end of a run; empty where all could.
    [[nodiscard]] std::string unreadText() const;
};

/// Reads every land block of the cell archive into the grid, on all processors. Points that two
/// blocks share take the values of the one with the greater identifier. A block that cannot be read
/// or decoded, or that lies outside the world, is logged and counted and leaves its area as it is;
/// the log has them in the order of their identifiers, and the archive collects them.
/// Where a block lies is what its entry says; one that says otherwise of itself is logged.
/// With a comparison, points are also flagged as added, removed or changed.
WQLandCounts WQFillLandGrid(WQLandGrid &grid, const WQDataFile &cellDataFile,
                            const WQDataFileComparison *comparison);
