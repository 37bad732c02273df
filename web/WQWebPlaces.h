#pragma once

#include "map/overlay/WQMapPoint.h"

#include <vector>

/// So many places a page can show and still be wandered about in.
inline constexpr std::size_t kWQMostWebPlaces = 100'000;

/// Those of some places that a page can show, in their order: places off the world, such as those
/// of infinite coordinates, are left out, and those beyond the first `most`. The log says of either
/// how many there are, and which is the first.
[[nodiscard]] std::vector<WQMapPoint> WQPlacesForPage(std::vector<WQMapPoint> places,
                                                      std::size_t most = kWQMostWebPlaces);
