#pragma once

#include "map/land/WQLandColorTable.h"
#include "map/land/WQLight.h"
#include "map/overlay/WQDrawing.h"
#include "map/overlay/WQOverlayChoice.h"
#include "map/overlay/WQTypesetter.h"

/// What the overlays need besides the drawing: the map that they are for, what is to be drawn, and
/// who sets the text. Whoever makes a style keeps what it refers to.
struct WQOverlayStyle {
    /// Pixels for each land point along each axis.
    std::uint64_t scale = 1;
    /// Unit vector toward the light; x east, y north, z up.
    ZPVector3 light;
    /// A factor to every colour; 255 leaves them as they are.
    float fudgeFactor = 255;
    const WQLandColorTable &colors;
    const WQOverlayChoice &choice;
    WQTypesetter &typesetter;

    WQImagePoint imagePoint(WQMapLocation location) const {
        return WQImagePointForMapLocation(location, scale);
    }
    /// A coordinate as players write it, such as "24.2S 57.0E".
    WQImagePoint imagePoint(const char *coordinate) const {
        WQMapLocation location;
        // The constants that overlays are placed by all parse.
        (void)WQMapCoordinateFromString(coordinate, &location);
        return imagePoint(location);
    }

    /// The rectangle from one coordinate to another in the north-east. Half a pixel more on each
    /// side makes it cover the pixels of both whole.
    WQImageRect box(const char *southWest, const char *northEast) const {
        const WQImagePoint p1 = imagePoint(southWest), p2 = imagePoint(northEast);
        const double x = p1.x - 0.5, y = p1.y - 0.5;
        return {x, y, p2.x + 0.5 - x, p2.y + 0.5 - y};
    }

    /// Flat deep water under this light: areas without real landscape are painted with it.
    WQPixel blankingColor() const {
        return colors.shadedColor(kWQDeepSeaLandType, fudgeFactor,
                                  static_cast<float>(WQFlatDiffuseFactor(light)));
    }
};

/// A box that is one pixel smaller on every side.
inline WQImageRect WQInsetByOnePixel(WQImageRect box) {
    return {box.x + 1, box.y + 1, box.width - 2, box.height - 2};
}
