#include "io/ZPStage.h"
#include "map/WQMapper.h"
#include "map/overlay/WQCompassOverlay.h"
#include "map/overlay/WQFeaturesBoxOverlay.h"
#include "map/overlay/WQGridOverlay.h"
#include "map/overlay/WQLowBitsOverlay.h"
#include "map/overlay/WQMarkerOverlay.h"
#include "map/overlay/WQTitleOverlay.h"
#include "map/overlay/WQTributeOverlay.h"

WQOverlayStyle WQMapper::overlayStyle() const {
    return {_scale, _lightVector, static_cast<float>(_fudgeFactor), WQLandColorTable::shared()};
}

/// Null where nothing is to be drawn over the land.
std::unique_ptr<const WQOverlay> WQMapper::newOverlay() const {
    if (!_shouldDrawGrid && !_coordinates)
        return nullptr;
    const ZPStage stage("overlays");
    auto drawing = std::make_unique<WQDrawing>(_scale);
    if (_shouldDrawGrid) {
        drawGridLinesInContext(*drawing);
        drawCompassInContext(*drawing);
        drawTitleInContext(*drawing);
        drawTributeInContext(*drawing);
    }
    if (_coordinates)
        drawMarkersAtCoordinatesInContext(*drawing);
    return drawing;
}

void WQMapper::drawGridLinesInContext(WQDrawing &context) const {
    WQDrawGridLines(context, overlayStyle());
}

void WQMapper::drawCompassInContext(WQDrawing &context) const {
    WQDrawCompass(context, overlayStyle());
}

void WQMapper::drawTitleInContext(WQDrawing &context) const {
    WQDrawTitle(context, overlayStyle());
}

void WQMapper::drawTributeInContext(WQDrawing &context) const {
    WQDrawTribute(context, overlayStyle());
}

void WQMapper::drawFeaturesBoxInContext(WQDrawing &context) const {
    WQDrawFeaturesBox(context, overlayStyle());
}

void WQMapper::drawMarkersAtCoordinatesInContext(WQDrawing &context) const {
    if (_coordinates)
        WQMarkerOverlay(context, _scale).drawMarkersAtCoordinates(*_coordinates);
}

void WQMapper::drawMapPoint(const WQMapPoint &point, WQDrawing &inContext) const {
    WQMarkerOverlay(inContext, _scale).drawMapPoint(point);
}

void WQMapper::drawMarkerAtCoordinate(WQMapLocation coordinate, WQDrawing &inContext) const {
    WQMarkerOverlay(inContext, _scale).drawMarkerAtCoordinate(coordinate);
}

void WQMapper::drawMarkerAtPoint(WQImagePoint point, WQDrawing &inContext) const {
    WQMarkerOverlay(inContext, _scale).drawMarkerAtPoint(point);
}

void WQMapper::highlightLowBits(const WQLandGrid &landGrid, WQDrawing &inContext) const {
    WQHighlightLowBits(landGrid, inContext);
}
