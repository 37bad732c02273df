#include "map/overlay/WQShape.h"

#include <cmath>

void WQShape::drawAtPoint(WQImagePoint point, WQPixel color, WQDrawing &context) {
    const double x = WQNearestSubpixel(point.x), y = WQNearestSubpixel(point.y);
    const double fractionX = x - std::floor(x), fractionY = y - std::floor(y);
    if (!std::isfinite(fractionX) || !std::isfinite(fractionY))
        return;
    auto &mask = _masks[{static_cast<int>(fractionX * 256), static_cast<int>(fractionY * 256)}];
    if (mask == nullptr)
        mask = WQMaskMaker::shared().maskOfOutline(_outline, _lineWidth, fractionX, fractionY);
    context.addMask(mask, {x, y}, color);
}
