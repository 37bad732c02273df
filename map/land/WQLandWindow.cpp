#include "map/land/WQLandWindow.h"

#include <algorithm>

void WQLandRow::copyFromGrid(const WQLandGrid &grid, unsigned y) {
    std::ranges::copy(grid.row(y), points.begin());
    std::ranges::transform(points, elevations.begin(),
                           [&grid](const WQLandPoint &point) { return grid.elevation(point); });
}

WQLandWindow::WQLandWindow(const WQLandGrid &grid, unsigned first, unsigned end,
                           const WQLandRow *southBorder, const WQLandRow *northBorder)
    : _grid(grid), _end(end), _northBorder(northBorder), _y(first) {
    if (southBorder != nullptr)
        _rows[0] = *southBorder;
    else
        load(first == 0 ? first : first - 1, _rows[0]);
    load(first, _rows[1]);
    load(first + 1, _rows[2]);
}

void WQLandWindow::moveNorth() {
    ++_y;
    WQLandRow &next = _rows[_south];
    _south = (_south + 1) % 3;
    if (_y < _end)
        load(_y + 1, next);
}

void WQLandWindow::load(unsigned y, WQLandRow &row) const {
    if (y == _end && _northBorder != nullptr)
        row = *_northBorder;
    else
        row.copyFromGrid(_grid, std::min(y, kWQLandSize - 1));
}
