#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>

/// Where a raster lies, in map coordinates: its north-western point, and how far its points are
/// from each other.
struct RasterPlace {
    double west, north, step;
};

/// Writes a raster of 32-bit floats or, with colours, of bytes, as a GeoTIFF, whole or not at all.
/// `fillRow` is given each row from the north. The coordinates are those of the game's map, which
/// no system of the earth has anything to do with. Throws CommandFailure when it cannot be written.
void writeFloatGeoTIFF(const std::filesystem::path &path, std::uint32_t width, std::uint32_t height,
                       const RasterPlace &place, const std::string &noData,
                       const std::function<void(std::uint32_t row, std::span<float>)> &fillRow);

struct RasterColor {
    std::uint8_t red = 0, green = 0, blue = 0;
};
void writeByteGeoTIFF(
    const std::filesystem::path &path, std::uint32_t width, std::uint32_t height,
    const RasterPlace &place, const std::string &noData, std::span<const RasterColor, 256> colors,
    const std::function<void(std::uint32_t row, std::span<std::uint8_t>)> &fillRow);
