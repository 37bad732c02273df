#include "map/land/WQMapColorScheme.h"

#include "io/ZPSystemLog.h"

#include <algorithm>
#include <string>

std::array<WQColor, WQMapColorScheme::kColorCount> WQMapColorScheme::colors() const {
#define WQ_MAP_COLOR_VALUE(color, setColor, red, green, blue) _##color,
    return {WQ_MAP_COLORS(WQ_MAP_COLOR_VALUE)};
#undef WQ_MAP_COLOR_VALUE
}

std::array<std::string_view, WQMapColorScheme::kColorCount> WQMapColorScheme::colorKeyPaths() {
#define WQ_MAP_COLOR_NAME(color, setColor, red, green, blue) #color,
    return {WQ_MAP_COLORS(WQ_MAP_COLOR_NAME)};
#undef WQ_MAP_COLOR_NAME
}

void WQMapColorScheme::updateColorArray() {
    std::ranges::transform(colors(), _colorArray.begin(), [](const WQColor &color) {
        return WQColorVector{static_cast<float>(color.red), static_cast<float>(color.green),
                             static_cast<float>(color.blue), static_cast<float>(color.alpha)};
    });
}

void WQMapColorScheme::logColors() const {
    const auto allColors = colors();
    const auto names = colorKeyPaths();
    const std::size_t width = std::ranges::max(names, {}, &std::string_view::size).size();

    std::string text;
    for (std::size_t index = 0; index < kColorCount; ++index) {
        const WQColor &color = allColors[index];
        std::string name(names[index]);
        name.resize(width, ' ');
        text +=
            ZPFormat("_%s = [NSColor colorWithSRGBRed:%f green:%f blue:%f alpha:%.1f]; // %zu\n",
                     name.c_str(), color.red, color.green, color.blue, color.alpha, index);
    }
    ZPLog("color data:\n%s", text.c_str());
}
