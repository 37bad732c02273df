#include "map/overlay/WQTypesetter.h"

#include "io/ZPText.h"

#include <cmath>

namespace {

constexpr WQPixel kBlack{0, 0, 0, 255}, kWhite{255, 255, 255, 255};
/// Nobody reads a longer label on a map, and the time that a line takes grows faster than its
/// length.
constexpr std::size_t kMostCharacters = 500;

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The bytes of the control character that a text begins with, 0 where it begins with another:
/// U+0000 to U+001F, U+007F to U+009F, and the separators of lines and paragraphs.
std::size_t lengthOfControl(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x20 || first == 0x7F)
        return 1;
    if (first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0)
        return 2;
    return text.starts_with("\u2028") || text.starts_with("\u2029") ? 3 : 0;
}

/// A text as it can be seen: cut, and with blanks for controls. The text is valid UTF-8.
std::string visibleText(std::string_view text) {
    // Of a file whose lines end in CR LF, each label keeps its CR.
    text = text.substr(0, text.find_last_not_of('\r') + 1);
    std::string visible;
    for (std::size_t count = 0; count < kMostCharacters && !text.empty(); ++count) {
        std::size_t length = lengthOfControl(text);
        if (length > 0) {
            visible += ' ';
        } else {
            do
                visible += text[length++];
            while (length < text.size() && isContinuation(text[length]));
        }
        text.remove_prefix(length);
    }
    return visible;
}

} // namespace

WQText WQTypesetter::set(const std::string &text, const WQFont &font) {
    if (!ZPIsValidUTF8(text))
        return {};
    if (_setter == nullptr)
        _setter = WQMaskMaker::shared().newTextSetter();
    return WQText(_setter->set(visibleText(text), font));
}

void WQText::drawAtPoint(WQImagePoint point, WQPixel color, WQDrawing &context) const {
    const double west = WQNearestSubpixel(point.x), north = WQNearestSubpixel(point.y + height());
    // The box begins below the line `north`, with the pixel whose centre is half a pixel lower.
    context.addMask(_set.mask, {std::floor(west + 0.5), std::floor(north + 0.5) - 0.5}, color);
}

void WQText::drawWithShadowAtPoint(WQImagePoint point, WQDrawing &context) const {
    drawAtPoint({point.x + 1, point.y - 1}, kBlack, context);
    drawAtPoint(point, kWhite, context);
}
