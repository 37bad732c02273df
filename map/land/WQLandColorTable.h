#pragma once

#include "map/land/WQMapColorScheme.h"
#include "map/land/WQPixel.h"

#include <array>
#include <cstdint>

inline constexpr unsigned kWQRoadLandType = 32;
inline constexpr unsigned kWQDeepSeaLandType = 20;
inline constexpr unsigned kWQLandTypeCount = 33;

/// Road where a road bit is set, else bits 2 to 7 of the terrain word.
inline unsigned WQLandTypeOfTerrainWord(std::uint16_t word) {
    return (word & 3) != 0 ? kWQRoadLandType : (word & 0xFFu) >> 2;
}

/// The colours of the land types. Alpha is stored and not used.
class WQLandColorTable {
  public:
    /// The table that all renderers share.
    static WQLandColorTable &shared();

    const WQPixel &operator[](std::size_t landType) const { return _colors[landType]; }

    /// Replaces every entry by the scheme's colour, each component truncated to a byte.
    void updateLandColors(const WQMapColorScheme &scheme);
    /// Snow on barren rock and grassland, ice on patchy grassland.
    void updateSnow();
    /// All water in one bright blue.
    void falseColorWater();
    /// Logs the table in the form of a colour scheme's assignments.
    void dumpColors() const;

    /// The colour of a land type under a share of light; pure red for a type that does not exist.
    WQPixel shadedColor(unsigned landType, float fudgeFactor, float diffuseFactor) const;

  private:
    std::array<WQPixel, kWQLandTypeCount> _colors = builtInColors();

    static std::array<WQPixel, kWQLandTypeCount> builtInColors();
};

/// The product of a colour component, fudge factor and light, clamped to a byte and truncated; 0
/// for a light that is not a number.
inline std::uint8_t WQShadedComponent(float componentTimesFudge, float diffuseFactor) {
    const float value = componentTimesFudge * diffuseFactor / 255.0f;
    // Written so that a value that is not a number falls to 0 and never reaches the conversion.
    const float clamped = value > 0.0f ? (value < 255.0f ? value : 255.0f) : 0.0f;
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(clamped));
}
