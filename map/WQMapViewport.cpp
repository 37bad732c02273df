#include "map/WQMapViewport.h"

#include <algorithm>
#include <tbb/parallel_for.h>

void WQMapViewport::updateTypes(const WQLandGrid &grid) {
    setupTypes();
    for (unsigned y = 0; y < kSize; ++y)
        for (unsigned x = 0; x < kSize; ++x)
            _types[y * kSize + x] = static_cast<std::uint8_t>(grid.at(x, y).landType());
}

void WQMapViewport::updateBitmap(const WQTerrainShader &shader) {
    setupBitmap();
    if (xOffset >= WQLandSize || yOffset >= WQLandSize)
        return;
    const std::size_t width = std::min<std::size_t>(kSize, WQLandSize - xOffset);
    const std::size_t height = std::min<std::size_t>(kSize, WQLandSize - yOffset);
    const auto end = static_cast<unsigned>(yOffset + height);
    tbb::parallel_for(tbb::blocked_range<unsigned>(yOffset, end, 16), [&](const auto &rows) {
        std::array<WQPixel, WQLandSize> pixels;
        for (unsigned y = rows.begin(); y < rows.end(); ++y) {
            shader.shadeRows(y, y + 1, [&pixels](unsigned) { return std::span(pixels); });
            std::copy_n(pixels.begin() + xOffset, width,
                        _bitmap.begin() + std::ptrdiff_t((kSize - 1 - (y - yOffset)) * kSize));
        }
    });
}
