#include "map/overlay/WQTypesetter.h"

#include "io/ZPText.h"

#include <cmath>

namespace {

constexpr WQPixel kBlack{0, 0, 0, 255}, kWhite{255, 255, 255, 255};

} // namespace

WQText WQTypesetter::set(const std::string &text, const WQFont &font) {
    return WQText(ZPIsValidUTF8(text) ? _setter->set(text, font) : WQTextMask());
}

void WQText::drawAtPoint(WQImagePoint point, WQPixel color, WQDrawing &context) const {
    const double west = WQNearestSubpixel(point.x), north = WQNearestSubpixel(point.y + height());
    // The box begins below the line `north`, with the pixel whose centre is half a pixel lower.
    context.addMask(_set.mask, {std::round(west), std::round(north) - 0.5}, color);
}

void WQText::drawWithShadowAtPoint(WQImagePoint point, WQDrawing &context) const {
    drawAtPoint({point.x + 1, point.y - 1}, kBlack, context);
    drawAtPoint(point, kWhite, context);
}
