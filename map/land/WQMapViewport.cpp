#include "map/land/WQMapViewport.h"

#include <algorithm>
#include <tbb/parallel_for.h>

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
    const auto end = static_cast<unsigned>(yOffset + height);
    tbb::parallel_for(tbb::blocked_range<unsigned>(yOffset, end, 16), [&](const auto &rows) {
        std::array<WQPixel, kWQLandSize> pixels;
        for (WQLandWindow window(grid, rows.begin(), rows.end()); window.y() < rows.end();
             window.moveNorth()) {
            shader.shadeRow(window, pixels);
            std::copy_n(pixels.begin() + xOffset, width,
                        _bitmap.begin() +
                            std::ptrdiff_t((kSize - 1 - (window.y() - yOffset)) * kSize));
        }
    });
}
