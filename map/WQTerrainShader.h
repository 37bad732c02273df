#pragma once

#include "map/WQLandGrid.h"
#include "map/WQLight.h"

#include <limits>

/// The least and greatest share of light found on land.
struct WQLightRange {
    double minimum = 1000.0;
    double maximum = -1000.0;

    void include(const WQLightRange &other) {
        minimum = other.minimum < minimum ? other.minimum : minimum;
        maximum = other.maximum > maximum ? other.maximum : maximum;
    }
};

/// Lights and colours land points. It refers to the grid, which must outlive it; rows may be shaded
/// by several threads at once.
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

    WQTerrainShader(const WQLandGrid &grid, const WQLandColorTable &colors,
                    const Settings &settings);

    /// The surface normal of a point, from those of the triangles to its neighbours that have data;
    /// not a number where there is none.
    static ZPVector3 calculateNormal(const WQLandGrid &landGrid, unsigned atX, unsigned y);

    /// Colours a row of the grid and gives the range of light on its land.
    WQLightRange shadeRow(unsigned y, std::span<WQPixel, WQLandSize> pixels) const;

  private:
    void loadElevations(unsigned y, float *elevations) const;
    void lightIncompletePoints(unsigned y, std::span<float, WQLandSize> dotProducts) const;
    WQPixel colorOfPoint(const WQLandPoint &point, float diffuseFactor) const;
    void markChanges(std::span<const WQLandPoint, WQLandSize> points,
                     std::span<WQPixel, WQLandSize> pixels) const;

    const WQLandGrid &_grid;
    Settings _settings;
    /// The pixel of a point without data.
    WQPixel _emptyPixel;
    /// Red, green and blue times the fudge factor, by the low byte of the terrain word.
    std::array<std::array<float, 3>, 256> _products{};
};
