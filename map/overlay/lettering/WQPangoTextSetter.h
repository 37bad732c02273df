#pragma once

#include "map/overlay/WQMaskMaker.h"

/// Sets text with Pango. Fonts are looked for when one is made. What goes wrong with a text is said
/// once, however many there are.
class WQPangoTextSetter final : public WQTextSetter {
  public:
    WQPangoTextSetter();
    ~WQPangoTextSetter() override;

    WQTextMask set(const std::string &text, const WQFont &font) override;

  private:
    struct Layout;

    /// Null once it is known that there is no font, or no memory.
    std::unique_ptr<Layout> _layout;
    bool _saidMissingGlyph = false;
};
