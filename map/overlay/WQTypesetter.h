#pragma once

#include "map/overlay/WQDrawing.h"
#include "map/overlay/WQMaskMaker.h"

#include <string>

// Families by preference. What is freely had comes first, so that the picture does not depend on
// what else a machine has; each list ends in what every machine can resolve.
inline constexpr char kWQSansFamilies[] =
    "Liberation Sans, Helvetica Neue, Helvetica, Arial, sans-serif";
inline constexpr char kWQWideSansFamilies[] = "Liberation Sans, Verdana, DejaVu Sans, sans-serif";
inline constexpr char kWQSerifFamilies[] = "Liberation Serif, Georgia, Gelasio, serif";

/// A text that was set once and can be drawn at many places.
class WQText {
  public:
    WQText() = default;
    explicit WQText(WQTextMask set) : _set(std::move(set)) {}

    /// Of the box that the text's letters stand in, in pixels.
    [[nodiscard]] double width() const { return _set.width; }
    [[nodiscard]] double height() const { return _set.height; }

    /// Draws the text with the box's south-west corner at this point, on the nearest whole pixels;
    /// from the middle of one to the north-east.
    void drawAtPoint(WQImagePoint point, WQPixel color, WQDrawing &context) const;
    /// The same in white over a black shadow that falls a pixel to the south-east.
    void drawWithShadowAtPoint(WQImagePoint point, WQDrawing &context) const;

  private:
    WQTextMask _set;
};

/// Sets text in one line, in any script that the machine has a font for. One thread at a time.
///
/// Of a long text only the first 500 characters are set, and controls as blanks: labels come from
/// files. Text comes out empty, without any size, where it is not valid UTF-8, where the machine
/// has no font or no memory; a typesetter logs the latter two once.
class WQTypesetter {
  public:
    /// `text` is UTF-8.
    [[nodiscard]] WQText set(const std::string &text, const WQFont &font);

  private:
    /// Made at first use, since fonts take a while to load.
    std::unique_ptr<WQTextSetter> _setter;
};
