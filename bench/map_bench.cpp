#include "bench/BenchWorld.h"
#include "map/WQLandImage.h"
#include "map/land/WQLandGridBuilder.h"
#include "map/land/WQTerrainShader.h"
#include "map/png/WQPNGBand.h"
#include "map/png/WQPNGFile.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>

namespace {

WQTerrainShader landShader() {
    static const WQLandColorTable colors = [] {
        WQLandColorTable table;
        table.updateLandColors(WQMapColorScheme());
        return table;
    }();
    return {colors, {.light = WQNormalizedVector({-0.5f, 0.5f, 0.707107f})}};
}

/// On one processor.
ZPLargeArray<WQPixel> shadedLand() {
    const WQTerrainShader shader = landShader();
    ZPLargeArray<WQPixel> pixels(std::size_t{kWQLandSize} * kWQLandSize);
    for (WQLandWindow window(BenchLandGrid(), 0, kWQLandSize); window.y() < kWQLandSize;
         window.moveNorth())
        shader.shadeRow(window,
                        std::span<WQPixel, kWQLandSize>(
                            pixels.data() + window.y() * std::size_t{kWQLandSize}, kWQLandSize));
    return pixels;
}

const WQColorImage &shadedImage(std::size_t scale) {
    static std::array<std::unique_ptr<WQColorImage>, 9> images;
    if (images[scale] == nullptr)
        images[scale] = std::make_unique<WQColorImage>(scale, shadedLand());
    return *images[scale];
}

/// On all processors.
void fillGrid(benchmark::State &state) {
    const WQDataFile &dataFile = BenchCellDataFile();
    for (auto _ : state) {
        const auto grid = WQLandGrid::allocate();
        benchmark::DoNotOptimize(WQFillLandGrid(*grid, dataFile, nullptr));
    }
}
BENCHMARK(fillGrid)->Unit(benchmark::kMillisecond)->UseRealTime();

void shadeLand(benchmark::State &state) {
    BenchLandGrid();
    for (auto _ : state)
        benchmark::DoNotOptimize(shadedLand());
}
BENCHMARK(shadeLand)->Unit(benchmark::kMillisecond);

/// One band after the other, into memory; the argument is the scale.
void filterAndDeflate(benchmark::State &state) {
    const WQColorImage &image = shadedImage(static_cast<std::size_t>(state.range(0)));
    WQPNGBand band(image.bytesPerPixel());
    std::size_t size = 0;
    for (auto _ : state) {
        size = 0;
        for (std::size_t first = 0; first < image.height(); first += image.rowsPerBand()) {
            image.readRows(first, std::min(image.rowsPerBand(), image.height() - first),
                           [&band](const WQRowRun &rows) { band.appendRows(rows); });
            size += band.finish().bytes.size();
        }
    }
    state.counters["bytes"] = static_cast<double>(size);
}
BENCHMARK(filterAndDeflate)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);

/// A whole file on all processors; the argument is the scale.
void writePNG(benchmark::State &state) {
    const WQColorImage &image = shadedImage(static_cast<std::size_t>(state.range(0)));
    const auto path = std::filesystem::path(PLOTTERRA_BENCH_WORLD) / "written.png";
    for (auto _ : state)
        if (!WQWritePNG(image, path))
            state.SkipWithError("the picture cannot be written");
    std::filesystem::remove(path);
}
BENCHMARK(writePNG)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
