#include "data_tool/Land.h"

#include "data_tool/Failure.h"
#include "map/land/WQLandGridBuilder.h"

#include <algorithm>

Land::Land(const std::filesystem::path &directory)
    : _clientData(directory), _grid(WQLandGrid::allocate()) {
    if (cellDataFile().blockStorage() == nullptr)
        throw CommandFailure(directory.string() + ": has no cell archive of the first game");
    if (_grid == nullptr)
        throw std::bad_alloc();
    cellDataFile().loadFileEntriesIfNecessary();
    WQFillLandGrid(*_grid, cellDataFile(), nullptr);
    _worldInfo = _clientData.worldInfo();
}

const WQWorldInfo &Land::neededWorldInfo() const {
    if (_worldInfo == nullptr)
        throw CommandFailure(_clientData.basePath().string() +
                             ": has no region record, which tells the real heights and the names "
                             "of the land types");
    return *_worldInfo;
}

std::optional<std::pair<float, float>> Land::heightRange() const {
    std::array<bool, 256> isUsed{};
    for (unsigned row = 0; row < WQLandGrid::kSize; ++row)
        for (const WQLandPoint &point : _grid->row(row))
            isUsed[point.heightIndex] |= point.has(WQLandPoint::hasData);
    std::optional<std::pair<float, float>> range;
    for (std::size_t index = 0; _worldInfo != nullptr && index < isUsed.size(); ++index) {
        if (!isUsed[index])
            continue;
        const float height = _worldInfo->actualLandHeights()[index];
        range = range ? std::pair{std::min(range->first, height), std::max(range->second, height)}
                      : std::pair{height, height};
    }
    return range;
}
