#include "map/overlay/WQTributeOverlay.h"

void WQDrawTribute(WQDrawing &context, const WQOverlayStyle &style) {
    context.fillRectangle(WQInsetByOnePixel(style.box("75N 75E", "80N 95E")),
                          style.blankingColor());
}
