#include "map/overlay/WQGridOverlay.h"

#include "io/ZPPointText.h"
#include "io/ZPSystemLog.h"

#include <cmath>
#include <cstdlib>

namespace {

constexpr WQPixel kBlack{0, 0, 0, 255}, kWhite{255, 255, 255, 255};
constexpr WQPixel kLineColor{70, 70, 70, 255};
constexpr int kStep = 5, kOutermost = 100;

/// Draws the parts of the grid, each over the ones before it.
class Grid {
  public:
    Grid(WQDrawing &context, const WQOverlayStyle &style)
        : _context(context), _style(style), _scale(static_cast<double>(style.scale)),
          _size(static_cast<float>(context.size())), _frameWidth(std::floor(_scale * 20.0 / 3.0)) {}

    void blankCorners() const;
    void logEnds() const;
    void drawLines() const;
    void drawFrame(int first, int sideOffset, WQPixel color) const;
    void drawLabels() const;

  private:
    double coordinate(float value) const {
        return WQImageCoordinate(static_cast<double>(value), _style.scale);
    }
    /// Where a line ends, from the cell that lies there. Kept in single precision.
    double endAtCell(double cell) const {
        return static_cast<float>(_scale * cell + static_cast<double>(_style.scale / 2) + 0.5);
    }
    double lineBegin() const { return endAtCell(19.000000000000057); } // (-100 + 101.9) * 10
    double lineEnd() const { return endAtCell(2019.0); }

    WQDrawing &_context;
    const WQOverlayStyle &_style;
    double _scale;
    double _size;
    double _frameWidth;
};

/// No land is meant to show there, whether or not there is any.
void Grid::blankCorners() const {
    const WQPixel color = _style.blankingColor();
    const WQImagePoint q1 = _style.imagePoint("75N 75E"), q2 = _style.imagePoint("100N 100E");
    const WQImagePoint q3 = _style.imagePoint("65N 90E"), q4 = _style.imagePoint("80N 95E");
    const WQImagePoint q5 = _style.imagePoint("95N 95W");
    _context.fillRectangle({q1.x, q1.y, q2.x - q1.x, q2.y - q1.y}, color);
    _context.fillRectangle({q3.x, q3.y, q4.x - q3.x, q4.y - q3.y}, color);
    _context.fillRectangle({0, q5.y, q5.x, _size - q5.y}, color);
}

void Grid::logEnds() const {
    ZPLog("(x1, y1) = (%f, %f)", lineBegin(), lineBegin());
    ZPLog("(x2, y2) = (%f, %f)", lineEnd(), lineEnd());
    const WQImagePoint p1 = _style.imagePoint({-100, -100}), p2 = _style.imagePoint({100, 100});
    ZPLog("p1: %s", ZPStringFromPoint(p1.x, p1.y).c_str());
    ZPLog("p2: %s", ZPStringFromPoint(p2.x, p2.y).c_str());
    // There is no display here.
    ZPLog("screen: %s", ZPTextOrNull(nullptr));
    ZPLog("screen colorspace: %s", ZPTextOrNull(nullptr));
}

/// Lines one pixel wide, whose middle is the centre of a pixel: where they cross they cover pixels
/// whole, so that drawing them one by one gives what one path would.
void Grid::drawLines() const {
    const double begin = lineBegin(), length = lineEnd() - begin;
    for (int i = -kOutermost; i <= kOutermost; i += kStep)
        _context.fillRectangle({coordinate(static_cast<float>(i)) - 0.5, begin, 1, length},
                               kLineColor);
    for (int i = -kOutermost; i <= kOutermost; i += kStep)
        _context.fillRectangle({begin, coordinate(static_cast<float>(i)) - 0.5, length, 1},
                               kLineColor);
}

/// Every other segment along all four edges, from `first` on; those of the sides are shifted.
void Grid::drawFrame(int first, int sideOffset, WQPixel color) const {
    const auto length = static_cast<double>(50 * _style.scale - 1);
    const double inner = _size - _frameWidth + 0.5;
    // Filled and outlined in the same colour with a line of one pixel, so half of it lies outside.
    const auto fillAndStroke = [&](double x, double y, double width, double height) {
        _context.fillRectangle({x - 0.5, y - 0.5, width + 1, height + 1}, color);
    };
    for (int i = first; i < kOutermost; i += 2 * kStep) {
        const double x = coordinate(static_cast<float>(i));
        const double y = coordinate(static_cast<float>(i) + static_cast<float>(sideOffset));
        fillAndStroke(x, 0.5, length, _frameWidth);
        fillAndStroke(x, inner, length, _frameWidth);
        fillAndStroke(0.5, y, _frameWidth, length);
        fillAndStroke(inner, y, _frameWidth, length);
    }
}

void Grid::drawLabels() const {
    const WQFont font{kWQSansFamilies, _style.scale == 1 ? 8.0 : 4 * _scale};
    struct Label {
        WQText text;
        double center;
    };
    std::vector<Label> labels;
    for (int i = -kOutermost; i <= kOutermost; i += kStep)
        labels.push_back({_style.typesetter.set(ZPFormat("%d", std::abs(i)), font),
                          coordinate(static_cast<float>(i))});

    for (const auto &[text, center] : labels) {
        const double x = std::floor(center - text.width() * 0.5);
        const double top = std::floor(_size - _frameWidth - text.height());
        text.drawWithShadowAtPoint({x, _scale + _frameWidth}, _context);
        text.drawWithShadowAtPoint({x, top}, _context);
    }
    // After all of those, which they may overlap in the corners.
    const double left = _scale / 3.0 * 7.0 + _frameWidth;
    const double rightMargin = _scale / 3.0 * 5.0 + _frameWidth;
    for (const auto &[text, center] : labels) {
        const double y = std::floor(center - text.height() * 0.5);
        const double right = std::floor(_size - rightMargin - text.width());
        text.drawWithShadowAtPoint({left, y}, _context);
        text.drawWithShadowAtPoint({right, y}, _context);
    }
}

} // namespace

void WQDrawGridLines(WQDrawing &context, const WQOverlayStyle &style) {
    const Grid grid(context, style);
    grid.blankCorners();
    grid.logEnds();
    grid.drawLines();
    grid.drawFrame(-100, 5, kBlack);
    grid.drawFrame(-95, -5, kWhite);
    grid.drawLabels();
}
