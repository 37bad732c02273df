#include "map/overlay/lettering/WQPangoTextSetter.h"

#include "io/ZPSystemLog.h"
#include "map/overlay/lettering/WQMaskSurface.h"

#include <algorithm>
#include <pango/pangocairo.h>

namespace {

/// Wider than any picture, and as much as a surface can have.
constexpr int kGreatestWidth = 32767;

struct Free {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(PangoFontDescription *font) const { pango_font_description_free(font); }
    void operator()(cairo_font_options_t *options) const { cairo_font_options_destroy(options); }
};
template <class T>
using Handle = std::unique_ptr<T, Free>;

} // namespace

struct WQPangoTextSetter::Layout {
    Handle<PangoFontMap> fontMap{pango_cairo_font_map_new()};
    Handle<PangoContext> context{pango_font_map_create_context(fontMap.get())};
    Handle<PangoLayout> layout;

    Layout() {
        // Fixed, so that no setting of somebody's desktop shows in the picture.
        const Handle<cairo_font_options_t> options(cairo_font_options_create());
        cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_SLIGHT);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_ON);
        pango_cairo_context_set_font_options(context.get(), options.get());
        layout.reset(pango_layout_new(context.get()));
        // Else a text of line breaks would need a mask as high as it is long.
        pango_layout_set_single_paragraph_mode(layout.get(), true);
    }
};

WQPangoTextSetter::WQPangoTextSetter() : _layout(std::make_unique<Layout>()) {}

WQPangoTextSetter::~WQPangoTextSetter() = default;

WQTextMask WQPangoTextSetter::set(const std::string &text, const WQFont &font) {
    WQTextMask result;
    if (_layout == nullptr)
        return result;

    const Handle<PangoFontDescription> description(pango_font_description_new());
    pango_font_description_set_family_static(description.get(), font.families);
    pango_font_description_set_absolute_size(description.get(), font.sizeInPixels * PANGO_SCALE);
    pango_font_description_set_weight(description.get(),
                                      font.isBold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    // Asked for first, since a layout would warn and make do with boxes.
    const Handle<PangoFont> anyFont(
        pango_context_load_font(_layout->context.get(), description.get()));
    if (anyFont == nullptr) {
        ZPLog("Error: this machine has no fonts; the labels of the map are missing.");
        _layout.reset();
        return result;
    }

    PangoLayout *layout = _layout->layout.get();
    pango_layout_set_font_description(layout, description.get());
    // Of a file whose lines end in CR LF, each label keeps its CR, which is not for the eye.
    const std::string visible = text.substr(0, text.find_last_not_of('\r') + 1);
    pango_layout_set_text(layout, visible.c_str(), -1);

    PangoRectangle ink, box;
    pango_layout_get_extents(layout, &ink, &box);
    result.width = pango_units_to_double(box.width);
    result.height = pango_units_to_double(box.height);
    pango_extents_to_pixels(&ink, nullptr);
    if (ink.width <= 0 || ink.height <= 0)
        return result;

    // Hinting may move ink a little beyond its measured bounds. Accents that tower more than a line
    // above or below the text are cut off.
    const int lineHeight = PANGO_PIXELS_CEIL(box.height);
    WQMask bounds;
    bounds.firstColumn = ink.x - 1;
    bounds.firstRow = std::max(ink.y - 1, -lineHeight);
    bounds.width = std::min(ink.width + 2, kGreatestWidth);
    bounds.height = std::min(ink.y + ink.height + 1, 2 * lineHeight) - bounds.firstRow;
    if (bounds.height <= 0)
        return result;
    WQMaskSurface surface(bounds);
    pango_cairo_show_layout(surface.context(), layout);
    result.mask = surface.finish();
    return result;
}
