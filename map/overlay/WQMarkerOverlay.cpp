#include "map/overlay/WQMarkerOverlay.h"

#include "io/ZPSystemLog.h"

namespace {

constexpr WQPixel kRed{255, 0, 0, 255}, kBlack{0, 0, 0, 255};
constexpr WQFont kLabelFont{kWQSansFamilies, 12};
/// How far a label may reach from its origin, with much to spare.
constexpr double kLabelMargin = 3 * kLabelFont.sizeInPixels;

} // namespace

void WQMarkerOverlay::drawMapPoint(const WQMapPoint &mapPoint) {
    const WQImagePoint point = _style.imagePoint(mapPoint.coordinate());
    drawMarkerAtCoordinate(mapPoint.coordinate());
    const WQImagePoint origin{point.x + 15.0, point.y - 5.0};
    // Setting a label takes far longer than seeing that it would be off the picture.
    if (_context.shows({origin.x - kLabelMargin, origin.y - kLabelMargin,
                        kWQGreatestTextWidth + kLabelMargin, 2 * kLabelMargin}))
        _style.typesetter.set(mapPoint.label(), kLabelFont).drawAtPoint(origin, kBlack, _context);
}

void WQMarkerOverlay::drawMarkerAtCoordinate(WQMapLocation coordinate) {
    drawMarkerAtPoint(_style.imagePoint(coordinate));
}

void WQMarkerOverlay::drawMarkerAtPoint(WQImagePoint point) {
    _disc.drawAtPoint(point, kRed, _context);
    _ring.drawAtPoint(point, kBlack, _context);
}

void WQDrawMarkers(WQDrawing &context, const WQOverlayStyle &style) {
    ZPLog("c1: RGB (1, 0, 0, 1)");
    ZPLog("c2: RGB (0, 0, 0, 1)");
    WQMarkerOverlay overlay(context, style);
    if (style.choice.coordinates)
        for (const WQMapPoint &mapPoint : *style.choice.coordinates)
            overlay.drawMapPoint(mapPoint);
}
