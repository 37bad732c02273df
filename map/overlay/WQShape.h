#pragma once

#include "map/overlay/WQDrawing.h"
#include "map/overlay/WQMaskMaker.h"

#include <map>

/// A filled or stroked outline that can be drawn at many places.
class WQShape {
  public:
    static WQShape filled(WQOutline outline) { return {std::move(outline), 0}; }
    static WQShape stroked(WQOutline outline, double lineWidth) {
        return {std::move(outline), lineWidth};
    }

    /// Draws the shape with its origin at this point.
    void drawAtPoint(WQImagePoint point, WQPixel color, WQDrawing &context);

  private:
    WQShape(WQOutline outline, double lineWidth)
        : _outline(std::move(outline)), _lineWidth(lineWidth) {}

    WQOutline _outline;
    /// 0 to fill.
    double _lineWidth;
    /// Masks by where the origin lies within its pixel, in 1/256 of a pixel. Points that are given
    /// in tenths of map units all share one.
    std::map<std::pair<int, int>, std::shared_ptr<const WQMask>> _masks;
};
