#pragma once

#include "map/overlay/WQDrawing.h"
#include "map/overlay/WQMaskMaker.h"

#include <string>

// Each ends in what every machine can resolve.
inline constexpr char kWQSansFamilies[] =
    "Helvetica Neue, Helvetica, Arial, Liberation Sans, sans-serif";
inline constexpr char kWQWideSansFamilies[] = "Verdana, DejaVu Sans, sans-serif";
inline constexpr char kWQSerifFamilies[] =
    "Georgia, Gelasio, DejaVu Serif, Liberation Serif, serif";

/// A text that was set once and can be drawn at many places.
class WQText {
  public:
    WQText() = default;
    explicit WQText(WQTextMask set) : _set(std::move(set)) {}

    /// Of the box that the text's letters stand in.
    double width() const { return _set.width; }
    double height() const { return _set.height; }

    /// Draws the text with the box's south-west corner at this point, on whole pixels.
    void drawAtPoint(WQImagePoint point, WQPixel color, WQDrawing &context) const;
    /// The same in white over a black shadow that falls a pixel to the south-east.
    void drawWithShadowAtPoint(WQImagePoint point, WQDrawing &context) const;

  private:
    WQTextMask _set;
};

/// Sets text in one line, in any script that the machine has a font for. One thread at a time.
///
/// Text comes out empty, without any size, where it is not valid UTF-8 or where the machine has no
/// font; a typesetter logs the latter once.
class WQTypesetter {
  public:
    WQText set(const std::string &text, const WQFont &font);

  private:
    std::unique_ptr<WQTextSetter> _setter = WQMaskMaker::shared().newTextSetter();
};
