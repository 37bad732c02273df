#include "bench/BenchWorld.h"

#include "map/land/WQLandGridBuilder.h"

#include <cstdio>
#include <cstdlib>

WQClientData &BenchClientData() {
    static WQClientData clientData(PLOTTERRA_BENCH_WORLD);
    return clientData;
}

WQDataFile &BenchCellDataFile() {
    WQDataFile &dataFile = *BenchClientData().cellDataFile();
    dataFile.loadFileEntriesIfNecessary();
    return dataFile;
}

const WQLandGrid &BenchLandGrid() {
    static const auto grid = [] {
        auto land = WQLandGrid::allocate();
        const WQWorldInfo *worldInfo = BenchClientData().worldInfo();
        if (land == nullptr || worldInfo == nullptr) {
            std::fputs("There is no sample world at " PLOTTERRA_BENCH_WORLD ".\n", stderr);
            std::exit(EXIT_FAILURE);
        }
        land->setLandHeights(worldInfo->actualLandHeights());
        WQFillLandGrid(*land, BenchCellDataFile(), nullptr);
        return land;
    }();
    return *grid;
}
