// What an archive costs is in proportion to its size, whatever it holds: to index it, to compare it
// with itself, to read its land, to check its blocks. Here slow inputs are what is looked for.

#include "fuzz/FuzzTarget.h"

#include "game/WQClientData.h"
#include "game/WQDataFileComparison.h"
#include "map/land/WQLandGridBuilder.h"

#include <ctime>

namespace {

/// Of all threads. Ten times what sound archives take with sanitizers, so that neither a busy
/// machine nor a slow one looks like a fault.
constexpr double kSeconds = 1, kSecondsPerByte = 10e-6;

double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

void work() {
    WQClientData clientData(FuzzFolder());
    WQDataFile &dataFile = *clientData.cellDataFile();
    dataFile.loadFileEntriesIfNecessary();
    dataFile.check();
    if (const auto *storage = dataFile.blockStorage())
        (void)storage->check();
    WQDataFileComparison comparison(&dataFile, &dataFile);
    comparison.buildComparison();
    const auto grid = WQLandGrid::allocate();
    FuzzExpect(grid != nullptr);
    WQFillLandGrid(*grid, dataFile, &comparison);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzWriteFile("client_cell_1.dat", std::as_bytes(std::span(bytes, size)));
    const double start = processorSeconds();
    work();
    FuzzExpect(processorSeconds() - start <=
               kSeconds + static_cast<double>(size) * kSecondsPerByte);
    return 0;
}
