#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Where the world begins in the south and in the west, in map units south and west of their
/// origin.
inline constexpr double kWQMapEdge = 101.9;

/// A place in map units, x growing to the east and y to the north. A land block is 0.8 units wide
/// and the world 204.
struct WQMapLocation {
    double x = 0;
    double y = 0;
};

/// Reads text such as `24.2S 57.0E`: number, letter n or s, an optional comma, number, letter e or
/// w, with blanks anywhere between them. What follows is ignored. Numbers are read in single
/// precision. A negative number combines with its letter: `-24.2S` lies north.
///
/// A text that does not parse is logged; `outPoint`, when given, then holds what was reached, with
/// 0 for each part not read.
[[nodiscard]] bool WQMapCoordinateFromString(std::string_view text, WQMapLocation *outPoint);
/// The same without a word in the log, for lists that hold too much of it.
[[nodiscard]] bool WQScanMapCoordinate(std::string_view text, WQMapLocation &location);

/// One decimal, each number in five columns: ` 24.2S  57.0E`.
std::string WQStringFromMapCoordinate(WQMapLocation location);
/// The same with five decimals.
std::string WQPreciseStringFromMapCoordinate(WQMapLocation location);

/// The south-west corner of the cell with this identifier:
///
///     31   24 23   16 15        0
///     | x    | y     | cell     |      x, y: the land block
///
/// Cells 1 to 64 lie outdoors, column by column from the south-west, eight to a column and 0.1
/// units wide; any other number gives the corner of the land block.
WQMapLocation WQMapCoordinateForCellID(std::uint32_t cellID);
