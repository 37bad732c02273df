// highest-point <directory with dat files>: opens a data directory and prints its highest point.

#include "game/WQClientData.h"
#include "game/WQLandBlock.h"
#include "game/WQMapCoordinate.h"

#include <cstdio>

int main(int argc, char *argv[]) {
    if (argc != 2)
        return 2;
    WQClientData client{std::filesystem::path(argv[1])};
    const WQWorldInfo *world = client.worldInfo();
    if (world == nullptr) {
        std::fputs("There is no region record.\n", stderr);
        return 1;
    }

    WQDataFile &archive = *client.cellDataFile();
    archive.loadFileEntriesIfNecessary();
    float highest = 0;
    WQMapLocation place;
    for (const ZPGorvaneFileEntry &entry : archive.fileEntriesByIdentifier()) {
        if ((entry.identifier & 0xFFFF) != 0xFFFF)
            continue; // no land block
        const auto bytes = archive.readDataForFileEntry(entry);
        const auto block = bytes ? ZPRecordWithData<WQLandBlock>(*bytes, &client) : std::nullopt;
        if (!block)
            continue;
        for (unsigned x = 0; x < WQLandBlock::kSide; ++x)
            for (unsigned y = 0; y < WQLandBlock::kSide; ++y) {
                const auto index = block->height()[WQLandBlock::indexOfVertex(x, y)];
                if (world->actualLandHeights()[index] <= highest)
                    continue;
                highest = world->actualLandHeights()[index];
                place = WQMapCoordinateForCellID(entry.identifier);
                place.x += x * 0.1;
                place.y += y * 0.1;
            }
    }
    std::printf("%g at%s\n", static_cast<double>(highest),
                WQStringFromMapCoordinate(place).c_str());
    return 0;
}
