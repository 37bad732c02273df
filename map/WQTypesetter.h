#pragma once

#include "map/WQDrawing.h"

#include <string>

struct WQFont {
    /// Families by preference, separated by commas.
    const char *families;
    double sizeInPixels;
    bool isBold = false;
};

// Each ends in what every machine can resolve.
inline constexpr char WQSansFamilies[] =
    "Helvetica Neue, Helvetica, Arial, Liberation Sans, sans-serif";
inline constexpr char WQWideSansFamilies[] = "Verdana, DejaVu Sans, sans-serif";
inline constexpr char WQSerifFamilies[] = "Georgia, Gelasio, DejaVu Serif, Liberation Serif, serif";

/// A text that was set once and can be drawn at many places.
class WQText {
  public:
    /// Of the box that the text's letters stand in, from the highest that the font has to the
    /// lowest, whichever letters there are.
    double width() const { return _width; }
    double height() const { return _height; }

    /// Draws the text with the box's south-west corner at this point, on whole pixels.
    void drawAtPoint(WQImagePoint point, WQPixel color, WQDrawing &context) const;
    /// The same in white over a black shadow that falls a pixel to the south-east.
    void drawWithShadowAtPoint(WQImagePoint point, WQDrawing &context) const;

  private:
    friend class WQTypesetter;
    double _width = 0, _height = 0;
    /// Placed at the north-west corner of the box.
    std::shared_ptr<const WQMask> _mask = std::make_shared<const WQMask>();
};

/// Sets text in one line, in any script that the machine has a font for. One thread at a time.
///
/// Text comes out empty, without any size, where it is not valid UTF-8 or where the machine has no
/// font; a typesetter logs the latter once.
class WQTypesetter {
  public:
    WQTypesetter();
    ~WQTypesetter();
    WQTypesetter(const WQTypesetter &) = delete;
    WQTypesetter &operator=(const WQTypesetter &) = delete;

    WQText set(const std::string &text, const WQFont &font);

  private:
    struct Layout;
    /// Null once it is known that there is no font.
    std::unique_ptr<Layout> _layout;
};
