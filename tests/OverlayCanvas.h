#pragma once

#include "map/overlay/WQDrawnRows.h"
#include "map/overlay/WQOverlayStyle.h"

/// A drawing to lay overlays on, and the pixels that it makes of plain ground.
struct OverlayCanvas {
    static constexpr WQPixel kGround{40, 120, 200, 255};

    WQLandColorTable colors;
    WQOverlayChoice choice;
    WQTypesetter typesetter;
    WQOverlayStyle style;
    WQDrawing drawing;

    explicit OverlayCanvas(std::uint64_t scale)
        : style{scale, {-0.5f, 0.5f, 0.707107f}, 255, colors, choice, typesetter}, drawing(scale) {}

    /// Rows count from the south here.
    std::vector<WQPixel> pixels(int x, int y, int width, int height,
                                WQPixel ground = kGround) const {
        const auto [column, w, h] =
            std::array{std::size_t(x), std::size_t(width), std::size_t(height)};
        std::vector<WQPixel> pixels(w * h, ground);
        const WQDrawnRows::Block block{{column, column + w}, pixels};
        WQDrawnRows(drawing, drawing.size() - std::size_t(y) - h, h).drawOnBlocks({&block, 1});
        return pixels;
    }
    WQPixel pixel(int x, int y) const { return pixels(x, y, 1, 1).front(); }
    std::vector<WQPixel> row(int y) const { return pixels(0, y, int(drawing.size()), 1); }
    /// From the south.
    std::vector<WQPixel> column(int x) const {
        auto column = pixels(x, 0, 1, int(drawing.size()));
        return {column.rbegin(), column.rend()};
    }
};
