#include "map/overlay/WQLowBitsOverlay.h"

#include "map/overlay/WQShape.h"

void WQHighlightLowBits(const WQLandGrid &landGrid, WQDrawing &context) {
    constexpr std::uint16_t kRoadBits = 3;
    WQShape disc = WQShape::filled({{}, 5});
    for (unsigned y = 0; y < kWQLandSize; ++y) {
        unsigned x = 0;
        for (const WQLandPoint &point : landGrid.row(y)) {
            if (point.has(WQLandPoint::hasData) && (point.terrainWord & kRoadBits) == kRoadBits)
                disc.drawAtPoint({double(x), double(y)}, {255, 0, 0, 255}, context);
            ++x;
        }
    }
}
