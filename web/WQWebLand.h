#pragma once

#include "game/WQClientData.h"
#include "game/WQDataFileComparison.h"
#include "map/land/WQLandGridBuilder.h"
#include "web/WQLandPacking.h"

#include <memory>
#include <optional>

/// The land of a set of archives, with the flags of each land block.
struct WQWebLand {
    std::unique_ptr<WQLandGrid> grid;
    WQBlockFlags blocks{};
    std::uint32_t landBlockCount = 0;
    WQLandCounts counts;

    /// Reads the cell archive, whose index is loaded if need be. With a comparison, blocks are also
    /// flagged as added, removed or changed, whether or not there is land in them. None, with an
    /// error, when there is no land block that can be read or not enough memory.
    static std::optional<WQWebLand> readLand(WQClientData &clientData,
                                             const WQDataFileComparison *comparison,
                                             ZPError *error = nullptr);
};

inline constexpr char WQWebErrorDomain[] = "WQWebErrorDomain";
