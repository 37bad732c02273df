#pragma once

#include "map/overlay/WQMapPoint.h"
#include "map/overlay/WQShape.h"

#include <span>

/// Draws markers: a red disc with a black ring and a label to its right, as large at every scale.
class WQMarkerOverlay {
  public:
    /// For a drawing of that scale, which must outlive the overlay.
    WQMarkerOverlay(WQDrawing &context, std::uint64_t scale) : _context(context), _scale(scale) {}

    void drawMarkersAtCoordinates(std::span<const WQMapPoint> coordinates);
    void drawMapPoint(const WQMapPoint &mapPoint);
    void drawMarkerAtCoordinate(WQMapLocation coordinate);
    void drawMarkerAtPoint(WQImagePoint point);

  private:
    static constexpr double kRadius = 10.0, kRingWidth = 2.0;

    WQDrawing &_context;
    std::uint64_t _scale;
    WQShape _disc = WQShape::filled({{}, kRadius});
    WQShape _ring = WQShape::stroked({{}, kRadius}, kRingWidth);
};
