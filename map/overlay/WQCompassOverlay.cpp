#include "map/overlay/WQCompassOverlay.h"

#include "io/ZPPointText.h"
#include "io/ZPSystemLog.h"
#include "map/overlay/WQShape.h"

#include <cmath>

namespace {

constexpr WQPixel kBlack{0, 0, 0, 255}, kWhite{255, 255, 255, 255};
constexpr double kOuterRadius = 115, kInnerRadius = 104;
/// Where the points of the diagonal star, along each axis, and of the cardinal star end.
constexpr double kDiagonalReach = 104, kCardinalReach = 195;
/// Inner corners of the stars: on the axes, and along each axis.
constexpr double kDiagonalWaist = 25, kCardinalWaist = 24.748737341529164;

void drawStar(const std::vector<WQImagePoint> &corners, WQImagePoint center, WQDrawing &context) {
    WQShape::filled({corners}).drawAtPoint(center, kWhite, context);
    WQShape::stroked({corners}, 1).drawAtPoint(center, kBlack, context);
}

void drawLetters(WQImagePoint o, WQDrawing &context, WQTypesetter &typesetter) {
    const auto set = [&](const char *letter) {
        return typesetter.set(letter, {kWQSansFamilies, 48, true});
    };
    const WQText n = set("N"), s = set("S"), e = set("E"), w = set("W");
    n.drawWithShadowAtPoint({std::floor(o.x - n.width() * 0.5), o.y + kCardinalReach}, context);
    s.drawWithShadowAtPoint({std::floor(o.x - s.width() * 0.5), o.y - kCardinalReach - s.height()},
                            context);
    e.drawWithShadowAtPoint({o.x + kCardinalReach + 10.0, std::floor(o.y - e.height() * 0.5)},
                            context);
    w.drawWithShadowAtPoint(
        {o.x - kCardinalReach - (w.width() + 10.0), std::floor(o.y - w.height() * 0.5)}, context);
}

} // namespace

void WQDrawCompass(WQDrawing &context, const WQOverlayStyle &style) {
    const WQImagePoint center = style.imagePoint({87.5, 32.5});
    ZPLog("center: %s", ZPStringFromPoint(center.x, center.y).c_str());

    WQShape::filled({{}, kOuterRadius}).drawAtPoint(center, kWhite, context);
    WQShape::stroked({{}, kOuterRadius}, 2).drawAtPoint(center, kBlack, context);
    WQShape::stroked({{}, kInnerRadius}, 2).drawAtPoint(center, kBlack, context);

    constexpr double p = kDiagonalReach, q = kDiagonalWaist;
    drawStar({{0, q}, {p, p}, {q, 0}, {p, -p}, {0, -q}, {-p, -p}, {-q, 0}, {-p, p}}, center,
             context);
    constexpr double r = kCardinalReach, d = kCardinalWaist;
    drawStar({{0, r}, {d, d}, {r, 0}, {d, -d}, {0, -r}, {-d, -d}, {-r, 0}, {-d, d}}, center,
             context);
    // The clockwise half of each point of the cardinal star.
    WQShape::filled({{{0, 0},
                      {0, r},
                      {d, d},
                      {0, 0},
                      {r, 0},
                      {d, -d},
                      {0, 0},
                      {0, -r},
                      {-d, -d},
                      {0, 0},
                      {-r, 0},
                      {-d, d}}})
        .drawAtPoint(center, kBlack, context);

    drawLetters(center, context, style.typesetter);
}
