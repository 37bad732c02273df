#include "map/land/WQLandShading.h"

#include "io/ZPParallel.h"

#include <mutex>
#include <vector>

namespace {

constexpr unsigned kRowsPerWorker = 64;
constexpr unsigned kWorkers = (kWQLandSize + kRowsPerWorker - 1) / kRowsPerWorker;

/// The rows on both sides of the line between two workers. Each needs the other's row, which may
/// already be overwritten by then.
struct Border {
    WQLandRow south, north;
};

} // namespace

WQShadedLand WQShadeLand(std::unique_ptr<WQLandGrid> grid, const WQTerrainShader &shader) {
    std::vector<Border> borders(kWorkers - 1);
    for (unsigned index = 0; index < borders.size(); ++index) {
        const unsigned y = (index + 1) * kRowsPerWorker;
        borders[index].south.copyFromGrid(*grid, y - 1);
        borders[index].north.copyFromGrid(*grid, y);
    }

    WQShadedLand land;
    std::mutex lightLock;
    ZPParallelFor(kWorkers, [&](std::size_t worker) {
        const auto first = static_cast<unsigned>(worker) * kRowsPerWorker;
        const unsigned end = std::min(first + kRowsPerWorker, kWQLandSize);
        WQLandWindow window(*grid, first, end, worker > 0 ? &borders[worker - 1].south : nullptr,
                            worker < borders.size() ? &borders[worker].north : nullptr);
        WQLightRange light;
        for (; window.y() < end; window.moveNorth())
            light.include(shader.shadeRow(window, grid->rowAsPixels(window.y())));
        const std::lock_guard guard(lightLock);
        land.light.include(light);
    });
    land.pixels = std::move(*grid).takePixels();
    return land;
}
