#pragma once

#include "map/overlay/WQDrawing.h"

/// Some rows of the picture, and what a drawing lays on them.
///
/// Rows and columns are those of the picture, row 0 at the north edge, column 0 at the west. What
/// is asked of some rows costs no more than what lies on them, however much the drawing holds, and
/// pixels come out the same whichever rows and columns are drawn together.
class WQDrawnRows {
  public:
    /// Columns from `first` up to but not including `end`.
    struct Columns {
        std::size_t first = 0, end = 0;
    };

    /// Some columns of these rows, held in memory row by row without padding.
    struct Block {
        Columns columns;
        std::span<WQPixel> pixels;
    };

    /// The drawing must outlive this and all parts of it.
    WQDrawnRows(const WQDrawing &drawing, std::size_t firstRow, std::size_t rowCount);

    /// Some of these rows.
    [[nodiscard]] WQDrawnRows part(std::size_t firstRow, std::size_t rowCount) const;

    [[nodiscard]] std::size_t firstRow() const { return _firstRow; }
    [[nodiscard]] std::size_t rowCount() const { return _endRow - _firstRow; }

    /// The columns in which something is drawn: ascending, apart from each other, none where there
    /// is nothing. Pixels outside of them stay as they are.
    [[nodiscard]] std::vector<Columns> touchedColumns() const;

    /// Draws on the pixels of blocks, which ascend and do not overlap.
    void drawOnBlocks(std::span<const Block> blocks) const;

  private:
    using Item = WQDrawing::Item;
    struct Pixels {
        std::size_t firstRow, endRow, firstColumn, endColumn;
    };

    WQDrawnRows(const WQDrawing &drawing, std::size_t firstRow, std::size_t rowCount,
                std::vector<std::uint32_t> items);
    Pixels commonPixels(const Item &item, const Block &block) const;
    WQPixel *pixelsOfRow(const Block &block, std::size_t row) const;
    void drawItem(const Item &item, const Block &block) const;
    void drawRectangle(const Item &item, const Block &block) const;
    void drawMask(const Item &item, const Block &block) const;

    const WQDrawing &_drawing;
    std::size_t _firstRow, _endRow;
    /// In the order of drawing.
    std::vector<std::uint32_t> _items;
};
