#pragma once

#include "data_tool/DataSet.h"
#include "game/WQMapCoordinate.h"
#include "game/WQWorldInfo.h"
#include "map/land/WQLandGridBuilder.h"

/// The land of a data set with its real heights. Borrows the set.
class Land {
  public:
    /// Reads every land block. Throws CommandFailure when there is no cell archive.
    explicit Land(const DataSet &dataSet);

    const WQLandGrid &grid() const { return *_grid; }
    const WQLandCounts &counts() const { return _counts; }
    /// The region record. Throws CommandFailure when there is none.
    [[nodiscard]] const WQWorldInfo &worldInfo() const;

    /// Why some points have no height that is a number; empty where all have one.
    [[nodiscard]] std::string faultInHeights() const;
    /// Of the points with data and a height; none without such or without a region record.
    [[nodiscard]] std::optional<std::pair<float, float>> heightRange() const;

    // Map coordinates of the land points.
    static constexpr double kWest = -kWQMapEdge, kSouth = -kWQMapEdge, kPointsPerUnit = 10;
    static constexpr double xOf(unsigned column) { return kWest + column / kPointsPerUnit; }
    static constexpr double yOf(unsigned row) { return kSouth + row / kPointsPerUnit; }

  private:
    DataSetClientData _clientData;
    std::optional<WQWorldInfo> _worldInfo;
    std::unique_ptr<WQLandGrid> _grid;
    WQLandCounts _counts;
};
