#include "map/overlay/WQFeaturesBoxOverlay.h"

#include "io/ZPPointText.h"
#include "io/ZPSystemLog.h"
#include "map/overlay/WQShape.h"

void WQDrawFeaturesBox(WQDrawing &context, const WQOverlayStyle &style) {
    const WQImageRect box = style.box("48.75N 78.75E", "56.25N 96.25E");
    ZPLog("r1: %s", ZPStringFromRect(box.x, box.y, box.width, box.height).c_str());
    context.fillRectangle(box, style.blankingColor());
    WQShape::stroked({{{0, 0}, {box.width, 0}, {box.width, box.height}, {0, box.height}}}, 1)
        .drawAtPoint({box.x, box.y}, {0, 0, 0, 255}, context);
}
