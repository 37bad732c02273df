#pragma once

#include "map/land/WQMapGeometry.h"
#include "map/overlay/WQMask.h"

#include <memory>
#include <string>
#include <vector>

/// A closed polygon or, without corners, a circle about the origin; in pixels, y up.
struct WQOutline {
    std::vector<WQImagePoint> corners;
    double radius = 0;
};

/// Text that takes more pixels from west to east is cut off; wider than any picture.
inline constexpr int kWQGreatestTextWidth = 32767;

struct WQFont {
    /// Families by preference, separated by commas.
    const char *families;
    double sizeInPixels;
    bool isBold = false;
};

/// A text as a mask, placed at the north-west corner of the box that its letters stand in, from the
/// highest that the font has to the lowest, whichever letters there are.
struct WQTextMask {
    /// Of the box, in pixels.
    double width = 0, height = 0;
    std::shared_ptr<const WQMask> mask = std::make_shared<const WQMask>();
};

/// Sets text; see WQTypesetter.
class WQTextSetter {
  public:
    virtual ~WQTextSetter() = default;
    /// `text` is valid UTF-8 and short.
    [[nodiscard]] virtual WQTextMask set(const std::string &text, const WQFont &font) = 0;
};

/// Makes masks of paths and texts, by way of cairo and Pango.
///
/// These bring some thirty libraries along, and loading them takes a tenth of the time of a run
/// that draws nothing over the land. So what calls them is a library of its own, which is loaded
/// when the first mask is asked for.
class WQMaskMaker {
  public:
    /// Loaded at first use. Where it cannot be, that is logged, and masks come out empty.
    [[nodiscard]] static WQMaskMaker &shared();
    virtual ~WQMaskMaker() = default;

    /// The outline with its origin at (x, y) in the mask's pixel (0, 0), filled where the line
    /// width is 0, else stroked. An empty mask, and a line in the log, where there is no memory for
    /// it.
    [[nodiscard]] virtual std::shared_ptr<const WQMask>
    maskOfOutline(const WQOutline &outline, double lineWidth, double x, double y) = 0;
    [[nodiscard]] virtual std::unique_ptr<WQTextSetter> newTextSetter() = 0;
};
