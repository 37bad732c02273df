#include "map/overlay/WQTitleOverlay.h"

void WQDrawTitle(WQDrawing &context, const WQOverlayStyle &style) {
    context.fillRectangle(WQInsetByOnePixel(style.box("80N 70E", "100N 100E")),
                          style.blankingColor());

    const WQImagePoint anchor = style.imagePoint("89.8N 71E");
    const WQImagePoint origin{anchor.x + 2.0, anchor.y + -2.0};
    const auto letter = [&](const char *text, const WQFont &font, double right, double down) {
        style.typesetter.set(text, font)
            .drawWithShadowAtPoint({origin.x + right, origin.y - down}, context);
    };
    letter("Ostvale", {kWQSerifFamilies, 240, true}, 0, 0);
    letter("Map Created By:", {kWQWideSansFamilies, 25, true}, 50.0, 45.0);
    letter("Brannock of Tillmere", {kWQWideSansFamilies, 48, true}, 50.0, 105.0);
}
