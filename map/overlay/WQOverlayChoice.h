#pragma once

#include "map/overlay/WQMapPoint.h"

#include <optional>
#include <vector>

/// What is to be laid over the map; nothing unless it is asked for.
struct WQOverlayChoice {
    /// The coordinate grid, with compass, title and tribute.
    bool grid = false;
    /// The places to mark; none where no list was set.
    std::optional<std::vector<WQMapPoint>> coordinates;
};
