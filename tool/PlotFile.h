#pragma once

#include "map/overlay/WQMapPoint.h"

#include <filesystem>
#include <vector>

/// Reads the markers of a plot file, one `type;coord;label` a line, and logs how many lines and
/// markers it found. A line that makes no marker is skipped; a file that cannot be read, or is not
/// UTF-8, has no lines.
std::vector<WQMapPoint> readPlotFile(const std::filesystem::path &path);
