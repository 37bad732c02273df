#pragma once

#include "game/WQClientData.h"
#include "map/land/WQLandGrid.h"

/// The sample world, opened when it is first asked for and kept.
WQClientData &BenchClientData();
/// Its cell archive with the index loaded.
WQDataFile &BenchCellDataFile();
/// Its land.
const WQLandGrid &BenchLandGrid();
