#pragma once

#include "map/WQLandGrid.h"
#include "map/WQLight.h"

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

    /// Colours the rows from `first` up to but not including `end` and gives the range of light on
    /// their land. `pixelsOfRow` says where a row's pixels go.
    template <class PixelsOfRow>
    WQLightRange shadeRows(unsigned first, unsigned end, const PixelsOfRow &pixelsOfRow) const {
        Window window(_grid, first);
        WQLightRange range;
        for (unsigned y = first; y < end; ++y) {
            window.moveTo(y);
            range.include(shadeRow(window, y, pixelsOfRow(y)));
        }
        return range;
    }

  private:
    using Row = std::array<float, WQLandSize>;

    /// The elevations of a row and its neighbours, each read from the grid once while the window
    /// moves north. Outside the world the outermost row stands in.
    class Window {
      public:
        Window(const WQLandGrid &grid, unsigned first);
        void moveTo(unsigned y);
        const Row &south() const { return _rows[_south]; }
        const Row &center() const { return _rows[(_south + 1) % 3]; }
        const Row &north() const { return _rows[(_south + 2) % 3]; }

      private:
        void load(unsigned y, Row &row) const;

        const WQLandGrid &_grid;
        std::array<Row, 3> _rows;
        unsigned _y, _south = 0;
    };

    /// Red, green and blue, and a fourth that is not used.
    using Components = float __attribute__((vector_size(16)));

    WQLightRange shadeRow(const Window &window, unsigned y,
                          std::span<WQPixel, WQLandSize> pixels) const;
    void lightIncompletePoints(unsigned y, Row &dotProducts) const;
    void markChanges(unsigned y, std::span<WQPixel, WQLandSize> pixels) const;

    const WQLandGrid &_grid;
    Settings _settings;
    /// The pixel of a point without data.
    WQPixel _emptyPixel;
    /// Colours times the fudge factor, none negative, by the low byte of the terrain word.
    std::array<Components, 256> _products{};
};
