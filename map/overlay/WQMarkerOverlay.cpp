#include "map/overlay/WQMarkerOverlay.h"

#include "io/ZPSystemLog.h"
#include "map/overlay/WQTypesetter.h"

namespace {

constexpr WQPixel kRed{255, 0, 0, 255}, kBlack{0, 0, 0, 255};
constexpr WQFont kLabelFont{kWQSansFamilies, 12};

} // namespace

void WQMarkerOverlay::drawMarkersAtCoordinates(std::span<const WQMapPoint> coordinates) {
    ZPLog("c1: RGB (1, 0, 0, 1)");
    ZPLog("c2: RGB (0, 0, 0, 1)");
    for (const WQMapPoint &mapPoint : coordinates)
        drawMapPoint(mapPoint);
}

void WQMarkerOverlay::drawMapPoint(const WQMapPoint &mapPoint) {
    const WQImagePoint point = WQImagePointForMapLocation(mapPoint.coordinate(), _scale);
    drawMarkerAtCoordinate(mapPoint.coordinate());
    _context.typesetter()
        .set(mapPoint.label(), kLabelFont)
        .drawAtPoint({point.x + 15.0, point.y - 5.0}, kBlack, _context);
}

void WQMarkerOverlay::drawMarkerAtCoordinate(WQMapLocation coordinate) {
    drawMarkerAtPoint(WQImagePointForMapLocation(coordinate, _scale));
}

void WQMarkerOverlay::drawMarkerAtPoint(WQImagePoint point) {
    _disc.drawAtPoint(point, kRed, _context);
    _ring.drawAtPoint(point, kBlack, _context);
}
