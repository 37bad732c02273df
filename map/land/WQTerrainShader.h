#pragma once

#include "map/land/WQLandWindow.h"
#include "map/land/WQLight.h"

/// The least and greatest share of light found on land.
struct WQLightRange {
    double minimum = 1000.0;
    double maximum = -1000.0;

    void include(const WQLightRange &other) {
        minimum = other.minimum < minimum ? other.minimum : minimum;
        maximum = other.maximum > maximum ? other.maximum : maximum;
    }
};

/// Red, green and blue times the fudge factor, and an alpha that is full under any light.
using WQColorProduct = float __attribute__((vector_size(16)));

/// Lights and colours land points. Rows may be shaded by several threads at once.
class WQTerrainShader {
  public:
    struct Settings {
        /// Unit vector toward the light; x east, y north, z up.
        ZPVector3 light;
        float fudgeFactor = 255;
        /// Points without data are transparent instead of deep sea.
        bool usesAlpha = false;
        /// Points of changed, added and removed blocks are marked in green, blue and red.
        bool marksChanges = false;
    };

    WQTerrainShader(const WQLandColorTable &colors, const Settings &settings);

    /// The surface normal of a point, from those of the triangles to its neighbours that have data;
    /// not a number where there is none.
    static ZPVector3 calculateNormal(const WQLandGrid &landGrid, unsigned atX, unsigned y);

    /// Colours the row that a window is on and gives the range of light on its land. The pixels may
    /// take the place of the grid's row.
    WQLightRange shadeRow(const WQLandWindow &window, std::span<WQPixel, kWQLandSize> pixels) const;

  private:
    using Floats = std::array<float, kWQLandSize>;
    void lightIncompletePoints(const WQLandWindow &window, Floats &dotProducts) const;
    static void markChanges(const WQLandRow &row, std::span<WQPixel, kWQLandSize> pixels);

    Settings _settings;
    /// The pixel of a point without data.
    WQPixel _emptyPixel;
    /// Colours times the fudge factor, none negative, by the low byte of the terrain word.
    std::array<WQColorProduct, 256> _products{};
};
