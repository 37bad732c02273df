#include "web/WQWebLand.h"

#include "io/ZPSystemLog.h"

namespace {

constexpr std::uint8_t kLandFlags =
    WQLandPoint::hasData | WQLandPoint::hasObjectBlock | WQLandPoint::isPassable;

ZPError failure(std::string reason) {
    return {WQWebErrorDomain, 1, {{NSLocalizedFailureReasonErrorKey, std::move(reason)}}};
}

/// What blocks have in common with a point of theirs that is not on an edge, and so belongs to no
/// other. Gives the number of blocks that have land.
std::uint32_t takeFlagsOfGrid(const WQLandGrid &grid, WQBlockFlags &blocks) {
    std::uint32_t count = 0;
    for (unsigned column = 0; column < kWQLandBlocksPerSide; ++column)
        for (unsigned row = 0; row < kWQLandBlocksPerSide; ++row) {
            const WQLandPoint &point =
                grid.at(column * kWQCellsPerLandBlock + 1, row * kWQCellsPerLandBlock + 1);
            blocks[column << 8 | row] = point.flags & kLandFlags;
            count += point.has(WQLandPoint::hasData);
        }
    return count;
}

void markBlocks(const std::optional<WQLandBlockSet> &set, WQLandPoint::Flag flag,
                WQBlockFlags &blocks) {
    if (set)
        for (const std::uint32_t number : set->numbers())
            blocks[number] = static_cast<std::uint8_t>(blocks[number] | flag);
}

} // namespace

std::optional<WQWebLand> WQWebLand::readLand(WQClientData &clientData,
                                             const WQDataFileComparison *comparison,
                                             ZPError *error) {
    WQWebLand land;
    land.grid = WQLandGrid::allocate();
    if (land.grid == nullptr) {
        ZPFail(error, ZPError::posix(ENOMEM));
        return std::nullopt;
    }
    WQDataFile &cellDataFile = *clientData.cellDataFile();
    cellDataFile.loadFileEntriesIfNecessary();
    land.counts = WQFillLandGrid(*land.grid, cellDataFile, nullptr);
    cellDataFile.didReadAllFiles();
    land.landBlockCount = takeFlagsOfGrid(*land.grid, land.blocks);
    if (land.landBlockCount == 0) {
        ZPFail(error,
               failure(ZPFormat("%s: no land block could be read", cellDataFile.path().c_str())));
        return std::nullopt;
    }
    if (comparison != nullptr) {
        markBlocks(comparison->landBlocksAdded(), WQLandPoint::wasAdded, land.blocks);
        markBlocks(comparison->landBlocksRemoved(), WQLandPoint::wasRemoved, land.blocks);
        markBlocks(comparison->landBlocksChanged(), WQLandPoint::wasChanged, land.blocks);
    }
    return land;
}
