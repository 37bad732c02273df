#pragma once

#include "map/overlay/WQMapPoint.h"

#include <functional>
#include <optional>
#include <vector>

class WQDrawing;
struct WQOverlayStyle;

/// What is to be laid over the map; nothing unless it is asked for.
struct WQOverlayChoice {
    /// The coordinate grid, with compass, title and tribute.
    bool grid = false;
    /// The places to mark; none where no list was set.
    std::optional<std::vector<WQMapPoint>> coordinates;
    /// Overlays of a program's own, drawn over all others in this order.
    std::vector<std::function<void(WQDrawing &context, const WQOverlayStyle &style)>> others;
};
