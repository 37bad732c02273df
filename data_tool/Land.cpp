#include "data_tool/Land.h"

#include "data_tool/Failure.h"

#include <algorithm>
#include <cmath>

Land::Land(const DataSet &dataSet) : _clientData(dataSet), _grid(WQLandGrid::allocate()) {
    if (_grid == nullptr)
        throw std::bad_alloc();
    _counts = WQFillLandGrid(*_grid, dataSet.cellDataFile(), nullptr);
    const Archive *portal = dataSet.portal();
    const auto *entry =
        portal != nullptr ? portal->entries().find(kWQWorldInfoIdentifier) : nullptr;
    if (entry == nullptr)
        return;
    ZPData scratch;
    if (const auto bytes = portal->dataFile->readBytesForFileEntry(*entry, scratch))
        _worldInfo = ZPRecordWithData<WQWorldInfo>(*bytes, &_clientData);
}

const WQWorldInfo &Land::worldInfo() const {
    if (!_worldInfo)
        throw CommandFailure(_clientData.basePath().string() +
                             ": has no region record, which tells the real heights and the names "
                             "of the land types");
    return *_worldInfo;
}

std::string Land::faultInHeights() const {
    return _worldInfo ? _worldInfo->faultInLandHeights() : std::string();
}

std::optional<std::pair<float, float>> Land::heightRange() const {
    std::array<bool, 256> isUsed{};
    for (unsigned row = 0; row < WQLandGrid::kSize; ++row)
        for (const WQLandPoint &point : _grid->row(row))
            isUsed[point.heightIndex] |= point.has(WQLandPoint::hasData);
    std::optional<std::pair<float, float>> range;
    for (std::size_t index = 0; _worldInfo && index < isUsed.size(); ++index) {
        const float height = _worldInfo->actualLandHeights()[index];
        if (!isUsed[index] || !std::isfinite(height))
            continue;
        range = range ? std::pair{std::min(range->first, height), std::max(range->second, height)}
                      : std::pair{height, height};
    }
    return range;
}
