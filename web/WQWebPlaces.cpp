#include "web/WQWebPlaces.h"

#include "io/ZPSystemLog.h"
#include "map/land/WQMapGeometry.h"

#include <algorithm>

namespace {

/// The world ends half a point beyond its last points.
bool isOnMap(const WQMapPoint &place) {
    const WQImagePoint point = WQUnscaledPointForMapLocation(place.coordinate());
    constexpr double kEdge = kWQLandSize - 0.5;
    return point.x >= -0.5 && point.y >= -0.5 && point.x <= kEdge && point.y <= kEdge;
}

void logLeftOut(const char *why, std::size_t count, std::size_t whole, const WQMapPoint &first) {
    ZPLog("Error: %zu of %zu places %s, first '%s' at %s", count, whole, why, first.label().c_str(),
          WQStringFromMapCoordinate(first.coordinate()).c_str());
}

} // namespace

std::vector<WQMapPoint> WQPlacesForPage(std::vector<WQMapPoint> places, std::size_t most) {
    const std::size_t whole = places.size();
    const auto off = std::stable_partition(places.begin(), places.end(), isOnMap);
    if (off != places.end())
        logLeftOut("are off the world and left out", static_cast<std::size_t>(places.end() - off),
                   whole, *off);
    places.erase(off, places.end());
    if (places.size() > most) {
        logLeftOut("are more than a page shows and left out", places.size() - most, whole,
                   places[most]);
        places.erase(places.begin() + static_cast<std::ptrdiff_t>(most), places.end());
    }
    return places;
}
