#include "map/overlay/WQLetteringLibrary.h"
#include "map/overlay/lettering/WQMaskSurface.h"
#include "map/overlay/lettering/WQPangoTextSetter.h"
#include "map/overlay/lettering/WQSpareMemory.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace {

/// More than cairo asks for to measure one of the map's outlines, or to draw a small one.
constexpr std::size_t kMemoryForOutline = std::size_t{8} << 20;
constexpr char kNoMemory[] = "there is not enough memory";

void addOutline(cairo_t *context, const WQOutline &outline, double x, double y) {
    if (outline.corners.empty())
        cairo_arc(context, x, y, outline.radius, 0, 2 * std::numbers::pi);
    for (const WQImagePoint &corner : outline.corners)
        cairo_line_to(context, x + corner.x, y + corner.y);
    cairo_close_path(context);
}

class CairoMaskMaker final : public WQMaskMaker {
  public:
    std::shared_ptr<const WQMask> maskOfOutline(const WQOutline &outline, double lineWidth,
                                                double x, double y) override;
    std::unique_ptr<WQTextSetter> newTextSetter() override {
        return std::make_unique<WQPangoTextSetter>();
    }
};

std::shared_ptr<const WQMask> CairoMaskMaker::maskOfOutline(const WQOutline &outline,
                                                            double lineWidth, double x, double y) {
    const auto setUp = [&](cairo_t *context) {
        // The pixel that holds the origin spans y from 0 to 1 upward, and row 0 of the mask.
        cairo_translate(context, 0, 1);
        cairo_scale(context, 1, -1);
        // So that circles stay round to within what coverage can show.
        cairo_set_tolerance(context, 1.0 / 256);
        cairo_set_line_width(context, lineWidth);
        addOutline(context, outline, x, y);
    };
    const bool isStroked = lineWidth > 0;
    if (!WQHasSpareMemory(kMemoryForOutline))
        return WQMaskSurface::lackOfMask(kNoMemory);

    const WQMaskSurface measure;
    setUp(measure.context());
    double west, south, east, north;
    (isStroked ? cairo_stroke_extents : cairo_fill_extents)(measure.context(), &west, &south, &east,
                                                            &north);
    WQMask bounds;
    bounds.firstColumn = static_cast<int>(std::floor(west));
    bounds.firstRow = static_cast<int>(std::floor(1 - north));
    bounds.width = static_cast<int>(std::ceil(east)) - bounds.firstColumn;
    bounds.height = static_cast<int>(std::ceil(1 - south)) - bounds.firstRow;

    // The surface, the mask, and what cairo keeps of the path for each row that it crosses.
    const auto pixels = static_cast<std::size_t>(std::max(bounds.width, 0)) *
                        static_cast<std::size_t>(std::max(bounds.height, 0));
    if (!WQHasSpareMemory(kMemoryForOutline + 4 * pixels))
        return WQMaskSurface::lackOfMask(kNoMemory);
    WQMaskSurface surface(bounds);
    setUp(surface.context());
    (isStroked ? cairo_stroke : cairo_fill)(surface.context());
    return surface.finish();
}

} // namespace

const char WQLetteringVersion[] = PLOTTERRA_LETTERING_VERSION;

WQMaskMaker *WQLetteringMaskMaker(const char *programVersion) {
    static CairoMaskMaker maker;
    return std::strcmp(programVersion, WQLetteringVersion) == 0 ? &maker : nullptr;
}
