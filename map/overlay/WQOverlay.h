#pragma once

#include "map/land/WQMapGeometry.h"
#include "map/land/WQPixel.h"

#include <cstdint>
#include <span>
#include <vector>

/// What is laid over the land: a drawing of the whole map that was made once and can be drawn, part
/// by part and by several threads at once, on rows of the picture.
///
/// Rows and columns are those of the picture, row 0 at the north edge, column 0 at the west.
class WQOverlay {
  public:
    /// Columns from `first` up to but not including `end`.
    struct Columns {
        std::size_t first = 0, end = 0;
    };

    /// A rectangle of the picture, held in memory row by row without padding, straight alpha.
    struct Block {
        std::size_t firstRow = 0, rowCount = 0;
        Columns columns;
        std::span<WQPixel> pixels;
    };

    virtual ~WQOverlay() = default;

    /// The columns that the drawing touches in these rows: ascending, apart from each other, none
    /// where it touches nothing. Pixels outside of them stay as they are.
    virtual std::vector<Columns> touchedColumns(std::size_t firstRow,
                                                std::size_t rowCount) const = 0;

    /// Draws on the pixels of a block.
    virtual void drawOnBlock(const Block &block) const = 0;
};
