#include "map/land/WQLandColorTable.h"

#include "io/ZPSystemLog.h"

WQLandColorTable &WQLandColorTable::shared() {
    static WQLandColorTable table;
    return table;
}

std::array<WQPixel, kWQLandTypeCount> WQLandColorTable::builtInColors() {
    return {{{191, 179, 153, 0}, {165, 172, 126, 0}, {231, 233, 239, 0}, {155, 169, 90, 0},
             {166, 138, 64, 0},  {159, 140, 127, 0}, {146, 142, 149, 0}, {187, 172, 145, 0},
             {156, 142, 78, 0},  {146, 171, 26, 0},  {219, 198, 165, 0}, {218, 218, 200, 0},
             {217, 195, 168, 0}, {201, 176, 155, 0}, {181, 187, 169, 0}, {255, 255, 255, 0},
             {124, 149, 176, 0}, {147, 161, 176, 0}, {182, 199, 217, 0}, {147, 161, 176, 0},
             {147, 161, 176, 0}, {126, 138, 55, 0},  {182, 199, 217, 0}, {129, 138, 124, 0},
             {182, 171, 145, 0}, {152, 138, 138, 0}, {171, 171, 170, 0}, {241, 251, 253, 0},
             {187, 175, 149, 0}, {187, 175, 149, 0}, {188, 176, 150, 0}, {188, 176, 150, 0},
             {216, 206, 185, 0}}};
}

void WQLandColorTable::updateLandColors(const WQMapColorScheme &scheme) {
    const auto byte = [](double component) {
        const double value = component * 255.0;
        // A component outside of the scheme's range must not reach the conversion.
        return static_cast<std::uint8_t>(value > 0 ? (value < 255 ? value : 255.0) : 0.0);
    };
    std::size_t landType = 0;
    for (const WQColor &color : scheme.colors())
        _colors[landType++] = {byte(color.red), byte(color.green), byte(color.blue),
                               byte(color.alpha)};
}

void WQLandColorTable::updateSnow() {
    constexpr std::size_t kBarrenRock = 0, kGrassland = 1, kIce = 2, kPatchyGrassland = 9,
                          kSnow = 15;
    _colors[kBarrenRock] = _colors[kSnow];
    _colors[kGrassland] = _colors[kSnow];
    _colors[kPatchyGrassland] = _colors[kIce];
}

void WQLandColorTable::falseColorWater() {
    for (const std::size_t water : {16u, 17u, 18u, 19u, 20u, 22u})
        _colors[water] = {0, 0, 130, 0};
}

void WQLandColorTable::dumpColors() const {
    ZPLog("%s", "-[WQMapper dumpColors]");
    for (std::size_t index = 0; index < _colors.size(); ++index)
        ZPLog("foo = [NSColor colorWithSRGBRed:%f green:%f blue:%f alpha:%.1f]; // %zu",
              _colors[index].red / 255.0, _colors[index].green / 255.0, _colors[index].blue / 255.0,
              1.0, index);
}

WQPixel WQLandColorTable::shadedColor(unsigned landType, float fudgeFactor,
                                      float diffuseFactor) const {
    if (landType >= kWQLandTypeCount)
        return {255, 0, 0, 255};
    const WQPixel &color = _colors[landType];
    return {WQShadedComponent(color.red * fudgeFactor, diffuseFactor),
            WQShadedComponent(color.green * fudgeFactor, diffuseFactor),
            WQShadedComponent(color.blue * fudgeFactor, diffuseFactor), 255};
}
