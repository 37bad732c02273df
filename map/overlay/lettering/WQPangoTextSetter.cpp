#include "map/overlay/lettering/WQPangoTextSetter.h"

#include "io/ZPSystemLog.h"
#include "map/overlay/lettering/WQMaskSurface.h"
#include "map/overlay/lettering/WQSpareMemory.h"

#include <algorithm>
#include <array>
#include <fontconfig/fontconfig.h>
#include <latch>
#include <pango/pangocairo.h>
#include <system_error>
#include <thread>

namespace {

/// More than Pango and its libraries ask for to set one short text.
constexpr std::size_t kMemoryForText = std::size_t{32} << 20;
/// To look for a font, Pango starts up to three threads at once, of which each takes a stack and,
/// of the addresses that a process may have, a heap of 64 MiB.
constexpr int kThreadsForFont = 3;
constexpr std::size_t kMemoryForFont = kMemoryForText + kThreadsForFont * (std::size_t{72} << 20);

struct Free {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(PangoFontDescription *font) const { pango_font_description_free(font); }
    void operator()(cairo_font_options_t *options) const { cairo_font_options_destroy(options); }
};
template <class T>
using Handle = std::unique_ptr<T, Free>;

// GLib and fontconfig, on which Pango stands, end the process where they get no memory or no
// thread, so both have to be tried before.

/// Whether the threads that look for a font can be there side by side.
bool canStartThreads() {
    try {
        std::latch allStarted(1);
        std::array<std::jthread, kThreadsForFont> threads;
        // Let go before the threads are waited for, even if only some could be started.
        const std::unique_ptr<std::latch, decltype([](std::latch *latch) { latch->count_down(); })>
            release(&allStarted);
        for (std::jthread &thread : threads)
            thread = std::jthread([&allStarted] { allStarted.wait(); });
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}

bool canLookForFonts() {
    return canStartThreads() && WQHasSpareMemory(kMemoryForFont);
}

/// Reads what fonts the machine has, once. Left to Pango, fontconfig would try again for ever where
/// it finds no memory for that.
bool hasFonts() {
    static const bool hasThem = [] {
        const std::unique_ptr<FcConfig, decltype([](FcConfig *fonts) { FcConfigDestroy(fonts); })>
            fonts(FcInitLoadConfigAndFonts());
        return fonts != nullptr && FcConfigSetCurrent(fonts.get()) == FcTrue;
    }();
    return hasThem;
}

bool isASCII(const std::string &text) {
    return std::ranges::none_of(text, [](char byte) { return (byte & 0x80) != 0; });
}

Handle<PangoFontDescription> descriptionOfFont(const WQFont &font) {
    Handle<PangoFontDescription> description(pango_font_description_new());
    pango_font_description_set_family_static(description.get(), font.families);
    pango_font_description_set_absolute_size(description.get(), font.sizeInPixels * PANGO_SCALE);
    pango_font_description_set_weight(description.get(),
                                      font.isBold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    return description;
}

} // namespace

struct WQPangoTextSetter::Layout {
    Handle<PangoFontMap> fontMap{pango_cairo_font_map_new()};
    Handle<PangoContext> context{pango_font_map_create_context(fontMap.get())};
    Handle<PangoLayout> layout;

    Layout() {
        // Fixed, so that no setting of somebody's desktop shows in the picture. Full hinting, which
        // moves outlines up and down only, keeps the small digits of the grid legible.
        const Handle<cairo_font_options_t> options(cairo_font_options_create());
        cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_FULL);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_ON);
        pango_cairo_context_set_font_options(context.get(), options.get());
        layout.reset(pango_layout_new(context.get()));
        // Else a text of line breaks would need a mask as high as it is long.
        pango_layout_set_single_paragraph_mode(layout.get(), true);
    }
};

WQPangoTextSetter::WQPangoTextSetter() {
    if (canLookForFonts() && hasFonts())
        _layout = std::make_unique<Layout>();
    else
        ZPLog("Error: no memory or no thread for fonts; the labels of the map are missing.");
}

WQPangoTextSetter::~WQPangoTextSetter() = default;

/// Whether a text can be set without risk. To try for threads takes as long as to set some short
/// labels, so that is done only where fonts may have to be looked for.
bool WQPangoTextSetter::canSet(const std::string &text, const WQFont &font) {
    const bool isKnown = !_knownFonts.emplace(font.families, font.sizeInPixels, font.isBold).second;
    return isKnown && isASCII(text) ? WQHasSpareMemory(kMemoryForText) : canLookForFonts();
}

WQTextMask WQPangoTextSetter::set(const std::string &text, const WQFont &font) {
    WQTextMask result;
    if (_layout == nullptr)
        return result;
    if (!canSet(text, font)) {
        ZPLog("Error: no memory or no thread to set text; labels of the map are missing.");
        _layout.reset();
        return result;
    }

    const auto description = descriptionOfFont(font);
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
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    if (!_saidMissingGlyph && pango_layout_get_unknown_glyphs_count(layout) > 0) {
        _saidMissingGlyph = true;
        ZPLog("Error: no font of this machine has all characters of the label \"%s\", and perhaps "
              "of others; boxes stand in their place.",
              text.c_str());
    }

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
    bounds.width = std::min(ink.width + 2, kWQGreatestTextWidth);
    bounds.height = std::min(ink.y + ink.height + 1, 2 * lineHeight) - bounds.firstRow;
    if (bounds.height <= 0)
        return result;
    WQMaskSurface surface(bounds);
    pango_cairo_show_layout(surface.context(), layout);
    result.mask = surface.finish();
    return result;
}
