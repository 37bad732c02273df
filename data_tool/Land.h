#pragma once

#include "game/WQClientData.h"
#include "game/WQMapCoordinate.h"
#include "map/land/WQLandGrid.h"

/// The land of a data directory with its real heights.
class Land {
  public:
    /// Opens the archives and reads every land block. Throws CommandFailure when there is no cell
    /// archive.
    explicit Land(const std::filesystem::path &directory);

    const WQLandGrid &grid() const { return *_grid; }
    /// Null without a region record.
    const WQWorldInfo *worldInfo() const { return _worldInfo; }
    WQDataFile &cellDataFile() const { return *_clientData.cellDataFile(); }
    /// Throws CommandFailure when there is none.
    const WQWorldInfo &neededWorldInfo() const;

    /// Of the points with data; none without points or without real heights.
    std::optional<std::pair<float, float>> heightRange() const;

    // Map coordinates of the land points.
    static constexpr double kWest = -kWQMapEdge, kSouth = -kWQMapEdge, kPointsPerUnit = 10;
    static constexpr double xOf(unsigned column) { return kWest + column / kPointsPerUnit; }
    static constexpr double yOf(unsigned row) { return kSouth + row / kPointsPerUnit; }

  private:
    WQClientData _clientData;
    const WQWorldInfo *_worldInfo = nullptr;
    std::unique_ptr<WQLandGrid> _grid;
};
