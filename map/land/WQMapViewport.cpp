#include "map/land/WQMapViewport.h"

#include "io/ZPParallel.h"

#include <algorithm>

void WQMapViewport::updateTypes(const WQLandGrid &grid) {
    setupTypes();
    for (unsigned y = 0; y < kSize; ++y)
        for (unsigned x = 0; x < kSize; ++x)
            _types[y * kSize + x] = static_cast<std::uint8_t>(grid.at(x, y).landType());
}

void WQMapViewport::updateBitmap(const WQLandGrid &grid, const WQTerrainShader &shader) {
    setupBitmap();
    if (xOffset >= kWQLandSize || yOffset >= kWQLandSize)
        return;
    const std::size_t width = std::min<std::size_t>(kSize, kWQLandSize - xOffset);
    const std::size_t height = std::min<std::size_t>(kSize, kWQLandSize - yOffset);
    ZPParallelRanges(height, 16, [&](std::size_t firstRow, std::size_t endRow) {
        std::array<WQPixel, kWQLandSize> pixels;
        const auto end = static_cast<unsigned>(yOffset + endRow);
        for (WQLandWindow window(grid, static_cast<unsigned>(yOffset + firstRow), end);
             window.y() < end; window.moveNorth()) {
            shader.shadeRow(window, pixels);
            std::copy_n(pixels.begin() + xOffset, width,
                        _bitmap.begin() +
                            std::ptrdiff_t((kSize - 1 - (window.y() - yOffset)) * kSize));
        }
    });
}
