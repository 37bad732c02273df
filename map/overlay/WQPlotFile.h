#pragma once

#include "map/overlay/WQMapPoint.h"

#include <filesystem>
#include <vector>

/// Reads the markers of a plot file, one `type;coord;label` a line, and logs how many lines and
/// markers it found. A line that makes no marker is skipped; the first hundred whose coordinate
/// cannot be read are logged, of the others only their number.
///
/// A file has no lines, and the log says why, when it cannot be read or is not UTF-8, when a line
/// is longer than a mebibyte, or the whole than a gibibyte. Memory is taken for the markers alone,
/// at most for the first million.
[[nodiscard]] std::vector<WQMapPoint> WQReadPlotFile(const std::filesystem::path &path);
