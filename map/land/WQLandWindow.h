#pragma once

#include "map/land/WQLandGrid.h"

/// A row of the land, copied from the grid, with the elevation of each point.
struct WQLandRow {
    std::array<WQLandPoint, kWQLandSize> points;
    std::array<float, kWQLandSize> elevations;

    void copyFromGrid(const WQLandGrid &grid, unsigned y);
};

/// A row of the land and its neighbours, moving north over a stretch of rows. Each row is copied
/// once and before its turn comes, so that the grid's own row may be overwritten while the window
/// is on it.
class WQLandWindow {
  public:
    /// For the rows from `first` up to but not including `end`. Where others overwrite the rows on
    /// either side of these, copies that were made before stand in for them.
    WQLandWindow(const WQLandGrid &grid, unsigned first, unsigned end,
                 const WQLandRow *southBorder = nullptr, const WQLandRow *northBorder = nullptr);

    unsigned y() const { return _y; }
    void moveNorth();

    // At the edge of the world the outermost row stands in for its neighbour.
    const WQLandRow &south() const { return _rows[_south]; }
    const WQLandRow &center() const { return _rows[(_south + 1) % 3]; }
    const WQLandRow &north() const { return _rows[(_south + 2) % 3]; }

  private:
    void load(unsigned y, WQLandRow &row) const;

    const WQLandGrid &_grid;
    unsigned _end;
    const WQLandRow *_northBorder;
    std::array<WQLandRow, 3> _rows;
    unsigned _y, _south = 0;
};
