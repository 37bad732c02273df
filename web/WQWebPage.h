#pragma once

#include "map/overlay/WQMapPoint.h"
#include "web/WQWebLand.h"

#include <filesystem>
#include <span>

/// What a page shows.
struct WQWebContent {
    /// Text, never markup.
    std::string title;
    const WQWebLand *land = nullptr;
    /// Null unless lands are compared.
    const WQWebLand *olderLand = nullptr;
    /// Null where there is no region record: the land is flat then, and its types have no names.
    const WQWorldInfo *worldInfo = nullptr;
    /// As `WQPlacesForPage` leaves them.
    std::span<const WQMapPoint> places;
};

/// The page in one piece. It needs nothing else, and its Content-Security-Policy lets it load
/// nothing and run no script but its own, known by their digests.
std::string WQWebPageWithContent(const WQWebContent &content);
