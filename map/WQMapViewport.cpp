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
    tbb::parallel_for(std::size_t{0}, height, [&](std::size_t row) {
        std::array<WQPixel, WQLandSize> pixels;
        shader.shadeRow(static_cast<unsigned>(yOffset + row), pixels);
        std::copy_n(pixels.begin() + xOffset, width,
                    _bitmap.begin() + std::ptrdiff_t((kSize - 1 - row) * kSize));
    });
}
