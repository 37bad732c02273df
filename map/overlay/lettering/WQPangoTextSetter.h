#pragma once

#include "map/overlay/WQMaskMaker.h"

#include <set>
#include <tuple>

/// Sets text with Pango. Fonts are looked for when one is made. What goes wrong with a text is said
/// once, however many there are.
class WQPangoTextSetter final : public WQTextSetter {
  public:
    WQPangoTextSetter();
    ~WQPangoTextSetter() override;

    WQTextMask set(const std::string &text, const WQFont &font) override;

  private:
    struct Layout;
    bool canSet(const std::string &text, const WQFont &font);

    /// Null once it is known that there are no fonts, or not what it takes to set text.
    std::unique_ptr<Layout> _layout;
    /// Families, size and weight of those that a text was set in.
    std::set<std::tuple<const char *, double, bool>> _knownFonts;
    bool _saidMissingGlyph = false;
};
