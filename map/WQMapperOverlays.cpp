#include "map/WQMapper.h"
#include "map/overlay/WQCompassOverlay.h"
#include "map/overlay/WQFeaturesBoxOverlay.h"
#include "map/overlay/WQGridOverlay.h"
#include "map/overlay/WQLowBitsOverlay.h"
#include "map/overlay/WQMarkerOverlay.h"
#include "map/overlay/WQTitleOverlay.h"
#include "map/overlay/WQTributeOverlay.h"

WQOverlayStyle WQMapper::overlayStyle() const {
    return {
        _scale,         _lightVector, static_cast<float>(_fudgeFactor), WQLandColorTable::shared(),
        _overlayChoice, _typesetter};
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
    WQDrawMarkers(context, overlayStyle());
}

void WQMapper::drawMapPoint(const WQMapPoint &point, WQDrawing &inContext) const {
    WQMarkerOverlay(inContext, overlayStyle()).drawMapPoint(point);
}

void WQMapper::drawMarkerAtCoordinate(WQMapLocation coordinate, WQDrawing &inContext) const {
    WQMarkerOverlay(inContext, overlayStyle()).drawMarkerAtCoordinate(coordinate);
}

void WQMapper::drawMarkerAtPoint(WQImagePoint point, WQDrawing &inContext) const {
    WQMarkerOverlay(inContext, overlayStyle()).drawMarkerAtPoint(point);
}

void WQMapper::highlightLowBits(const WQLandGrid &landGrid, WQDrawing &inContext) const {
    WQHighlightLowBits(landGrid, inContext);
}
