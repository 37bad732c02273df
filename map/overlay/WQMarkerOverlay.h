#pragma once

#include "map/overlay/WQOverlayStyle.h"
#include "map/overlay/WQShape.h"

/// Draws markers: a red disc with a black ring and a label to its right, as large at every scale.
class WQMarkerOverlay {
  public:
    /// The drawing and what the style refers to must outlive the overlay.
    WQMarkerOverlay(WQDrawing &context, const WQOverlayStyle &style)
        : _context(context), _style(style) {}

    void drawMapPoint(const WQMapPoint &mapPoint);
    void drawMarkerAtCoordinate(WQMapLocation coordinate);
    void drawMarkerAtPoint(WQImagePoint point);

  private:
    static constexpr double kRadius = 10.0, kRingWidth = 2.0;

    WQDrawing &_context;
    WQOverlayStyle _style;
    WQShape _disc = WQShape::filled({{}, kRadius});
    WQShape _ring = WQShape::stroked({{}, kRadius}, kRingWidth);
};

/// Draws a marker at each of the chosen coordinates, in their order.
void WQDrawMarkers(WQDrawing &context, const WQOverlayStyle &style);
