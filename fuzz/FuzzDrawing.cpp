// The places of a plot file, laid over the picture with their labels.

#include "fuzz/FuzzTarget.h"

#include "map/overlay/WQDrawnRows.h"
#include "map/overlay/WQOverlayTable.h"
#include "map/overlay/WQPlotFile.h"

#include <vector>

namespace {

constexpr std::size_t kRowsPerBand = 64;

/// Draws as many rows as the encoder takes at once, on opaque ground, which stays opaque.
void drawBand(const WQDrawing &drawing, std::size_t first) {
    const std::size_t count = std::min(kRowsPerBand, drawing.size() - first);
    const WQDrawnRows rows(drawing, first, count);
    for (const WQDrawnRows::Columns columns : rows.touchedColumns()) {
        FuzzExpect(columns.first < columns.end && columns.end <= drawing.size());
        std::vector<WQPixel> pixels((columns.end - columns.first) * count, {40, 120, 200, 255});
        const WQDrawnRows::Block block{columns, pixels};
        rows.drawOnBlocks({&block, 1});
        for (const WQPixel &pixel : pixels)
            FuzzExpect(pixel.alpha == 255);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzWriteFile("towns.txt", std::as_bytes(std::span(bytes, size)));
    static WQTypesetter typesetter;
    const WQLandColorTable colors;
    WQOverlayChoice choice;
    choice.coordinates = WQReadPlotFile(FuzzFolder() / "towns.txt");
    const std::uint64_t scale = 1 + size % 2;
    const auto drawing =
        WQDrawOverlays({scale, {-0.5f, 0.5f, 0.707107f}, 255, colors, choice, typesetter});
    for (std::size_t row = 0; drawing != nullptr && row < drawing->size(); row += kRowsPerBand)
        drawBand(*drawing, row);
    return 0;
}
