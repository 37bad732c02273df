#pragma once

#include "map/overlay/WQMapPoint.h"

#include <filesystem>
#include <string>
#include <vector>

/// Reads the markers of a plot file, one `type;coord;label` a line, and logs how many lines and
/// markers it found. A line that makes no marker is skipped; the first hundred whose coordinate
/// cannot be read are logged, of the others only their number. What is lost is added to the
/// `shortcomings`, if given, a line each for the end of a run.
///
/// A file has no lines, and the log says why, when it cannot be read or is not UTF-8, when a line
/// is longer than a mebibyte, or the whole than a gibibyte. Memory is taken for the markers alone,
/// at most for the first million.
[[nodiscard]] std::vector<WQMapPoint>
WQReadPlotFile(const std::filesystem::path &path, std::vector<std::string> *shortcomings = nullptr);

/// How many places lie where no map has land, and which first; empty where none does.
[[nodiscard]] std::string WQTextOfPlacesOffTheMap(const std::vector<WQMapPoint> &places);
