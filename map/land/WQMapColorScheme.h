#pragma once

#include "map/land/WQColor.h"

#include <array>
#include <cstddef>
#include <string_view>

/// Property, setter, default red, green, blue. The order is that of the terrain codes 0 to 31, then
/// road; the renderer relies on it.
#define WQ_MAP_COLORS(X)                                                                           \
    X(barrenRockColor, setBarrenRockColor, 0.809365, 0.692823, 0.487465)                           \
    X(grasslandColor, setGrasslandColor, 0.705316, 0.725185, 0.566202)                             \
    X(iceColor, setIceColor, 0.924477, 0.931493, 0.95003)                                          \
    X(lushGrassColor, setLushGrassColor, 0.643121, 0.699204, 0.173626)                             \
    X(marshSparseSwampColor, setMarshSparseSwampColor, 0.711637, 0.606007, 0.317169)               \
    X(mudRichDirtColor, setMudRichDirtColor, 0.696344, 0.599053, 0.536161)                         \
    X(obsidianPlainColor, setObsidianPlainColor, 0.600295, 0.538227, 0.652249)                     \
    X(packedDirtColor, setPackedDirtColor, 0.782165, 0.728445, 0.635394)                           \
    X(patchyDirtColor, setPatchyDirtColor, 0.67575, 0.619991, 0.377634)                            \
    X(patchyGrasslandColor, setPatchyGrasslandColor, 0.636504, 0.71486, 0.128962)                  \
    X(yellowSandColor, setYellowSandColor, 0.90356, 0.760756, 0.567199)                            \
    X(greySandColor, setGreySandColor, 0.882895, 0.881156, 0.824074)                               \
    X(rockStrewnSandColor, setRockStrewnSandColor, 0.881361, 0.806465, 0.716019)                   \
    X(sedimentaryRockColor, setSedimentaryRockColor, 0.842972, 0.706322, 0.599576)                 \
    X(semiBarrenRockColor, setSemiBarrenRockColor, 0.732997, 0.773003, 0.626176)                   \
    X(snowColor, setSnowColor, 0.898246, 0.898372, 0.898206)                                       \
    X(runningWaterColor, setRunningWaterColor, 0.556967, 0.65183, 0.744284)                        \
    X(freshStandingWaterColor, setFreshStandingWaterColor, 0.641734, 0.693117, 0.744119)           \
    X(shallowSeaColor, setShallowSeaColor, 0.652976, 0.778732, 0.883405)                           \
    X(shallowStillSeaColor, setShallowStillSeaColor, 0.598144, 0.678343, 0.746363)                 \
    X(deepSeaColor, setDeepSeaColor, 0.472335, 0.623371, 0.747975)                                 \
    X(forestFloorColor, setForestFloorColor, 0.565273, 0.602481, 0.277206)                         \
    X(fauxRunningWaterColor, setFauxRunningWaterColor, 0.7628, 0.821936, 0.880016)                 \
    X(seaSlimeColor, setSeaSlimeColor, 0.576903, 0.608475, 0.559239)                               \
    X(argilaColor, setArgilaColor, 0.76503, 0.724832, 0.635438)                                    \
    X(volcano1Color, setVolcano1Color, 0.661897, 0.6117, 0.610578)                                 \
    X(volcano2Color, setVolcano2Color, 0.72679, 0.726701, 0.72336)                                 \
    X(blueIceColor, setBlueIceColor, 0.803298, 0.886972, 0.904534)                                 \
    X(mossColor, setMossColor, 0.793038, 0.704784, 0.551489)                                       \
    X(darkMossColor, setDarkMossColor, 0.710668, 0.610349, 0.433793)                               \
    X(vorrikColor, setVorrikColor, 0.795885, 0.712264, 0.567427)                                   \
    X(desolateLandsColor, setDesolateLandsColor, 0.785278, 0.741994, 0.653226)                     \
    X(roadColor, setRoadColor, 0.877227, 0.842489, 0.774031)

/// The colours that the map is painted with: one for each terrain code, and one for road.
class WQMapColorScheme {
  public:
    static constexpr std::size_t kColorCount = 33;

    WQMapColorScheme() { updateColorArray(); }

#define WQ_MAP_COLOR_ACCESSORS(color, setColor, red, green, blue)                                  \
    const WQColor &color() const {                                                                 \
        return _##color;                                                                           \
    }                                                                                              \
    void setColor(const WQColor &value) {                                                          \
        _##color = value;                                                                          \
    }
    WQ_MAP_COLORS(WQ_MAP_COLOR_ACCESSORS)
#undef WQ_MAP_COLOR_ACCESSORS

    std::array<WQColor, kColorCount> colors() const;
    /// The names of the properties.
    static std::array<std::string_view, kColorCount> colorKeyPaths();

    /// The colours at the last `updateColorArray()`; setters do not change it.
    const std::array<WQColorVector, kColorCount> &colorArray() const {
        return _colorArray;
    }
    void updateColorArray();

    /// Logs the colours as lines of code that a new set of defaults can be pasted from.
    void logColors() const;

  private:
#define WQ_MAP_COLOR_FIELD(color, setColor, red, green, blue) WQColor _##color{red, green, blue, 1};
    WQ_MAP_COLORS(WQ_MAP_COLOR_FIELD)
#undef WQ_MAP_COLOR_FIELD

    std::array<WQColorVector, kColorCount> _colorArray;
};
