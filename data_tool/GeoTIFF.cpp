#include "data_tool/GeoTIFF.h"

#include "data_tool/Failure.h"
#include "io/ZPAtomicFile.h"
#include "io/ZPData.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <tiffio.h>
#include <vector>

namespace {

constexpr std::uint32_t kRowsPerStrip = 64;
// The tags that make a TIFF a GeoTIFF, and the one that GIS programs know missing points by.
constexpr std::uint32_t kModelPixelScale = 33550, kModelTiepoint = 33922, kGeoKeyDirectory = 34735,
                        kGeoAsciiParams = 34737, kNoData = 42113;

char pixelScaleName[] = "ModelPixelScaleTag", tiepointName[] = "ModelTiepointTag",
     keyDirectoryName[] = "GeoKeyDirectoryTag", asciiParamsName[] = "GeoAsciiParamsTag",
     noDataName[] = "GDAL_NODATA";
const TIFFFieldInfo kFields[] = {
    {kModelPixelScale, -1, -1, TIFF_DOUBLE, FIELD_CUSTOM, 1, 1, pixelScaleName},
    {kModelTiepoint, -1, -1, TIFF_DOUBLE, FIELD_CUSTOM, 1, 1, tiepointName},
    {kGeoKeyDirectory, -1, -1, TIFF_SHORT, FIELD_CUSTOM, 1, 1, keyDirectoryName},
    {kGeoAsciiParams, -1, -1, TIFF_ASCII, FIELD_CUSTOM, 1, 0, asciiParamsName},
    {kNoData, -1, -1, TIFF_ASCII, FIELD_CUSTOM, 1, 0, noDataName},
};

void addFields(TIFF *tiff) {
    TIFFMergeFieldInfo(tiff, kFields, std::size(kFields));
}

/// A TIFF that is written into memory, since the library jumps about in its file.
class MemoryTIFF {
  public:
    MemoryTIFF() {
        TIFFSetTagExtender(&addFields);
        _tiff.reset(TIFFClientOpen("raster", "w", this, &readNothing, &write, &seek, &closeNothing,
                                   &size, nullptr, nullptr));
        if (_tiff == nullptr)
            throw CommandFailure("there is not enough memory for a raster");
    }
    MemoryTIFF(const MemoryTIFF &) = delete;
    MemoryTIFF &operator=(const MemoryTIFF &) = delete;

    TIFF *get() const { return _tiff.get(); }
    ZPData finish() {
        _tiff.reset();
        return std::move(_data);
    }

  private:
    static MemoryTIFF &self(thandle_t handle) { return *static_cast<MemoryTIFF *>(handle); }
    static tmsize_t readNothing(thandle_t, void *, tmsize_t) { return 0; }
    static tmsize_t write(thandle_t handle, void *bytes, tmsize_t count) {
        MemoryTIFF &file = self(handle);
        const auto length = static_cast<std::size_t>(count);
        file._data.resize(std::max(file._data.size(), file._position + length));
        std::memcpy(file._data.data() + file._position, bytes, length);
        file._position += length;
        return count;
    }
    static toff_t seek(thandle_t handle, toff_t offset, int from) {
        MemoryTIFF &file = self(handle);
        const std::size_t base = from == SEEK_CUR   ? file._position
                                 : from == SEEK_END ? file._data.size()
                                                    : 0;
        return file._position = base + offset;
    }
    static int closeNothing(thandle_t) { return 0; }
    static toff_t size(thandle_t handle) { return self(handle)._data.size(); }

    ZPData _data;
    std::size_t _position = 0;
    std::unique_ptr<TIFF, decltype(&TIFFClose)> _tiff{nullptr, &TIFFClose};
};

void setPlace(TIFF *tiff, const RasterPlace &place, const std::string &noData) {
    const double scale[] = {place.step, place.step, 0};
    const double tiepoint[] = {0, 0, 0, place.west, place.north, 0};
    const std::string citation = "Map coordinates|";
    // Version 1.1.0, then for each key: its number, where its value is, how many there are, the
    // value. The model is the user's own, values stand for points, and a citation names the model.
    constexpr std::uint16_t kUserDefined = 32767, kPixelIsPoint = 2;
    const std::uint16_t keys[] = {1,
                                  1,
                                  0,
                                  3,
                                  1024,
                                  0,
                                  1,
                                  kUserDefined,
                                  1025,
                                  0,
                                  1,
                                  kPixelIsPoint,
                                  1026,
                                  kGeoAsciiParams,
                                  static_cast<std::uint16_t>(citation.size()),
                                  0};
    TIFFSetField(tiff, kModelPixelScale, static_cast<int>(std::size(scale)), scale);
    TIFFSetField(tiff, kModelTiepoint, static_cast<int>(std::size(tiepoint)), tiepoint);
    TIFFSetField(tiff, kGeoKeyDirectory, static_cast<int>(std::size(keys)), keys);
    TIFFSetField(tiff, kGeoAsciiParams, citation.c_str());
    TIFFSetField(tiff, kNoData, noData.c_str());
}

template <class Sample>
void writeRaster(const std::filesystem::path &path, MemoryTIFF &raster, std::uint32_t width,
                 std::uint32_t height,
                 const std::function<void(std::uint32_t row, std::span<Sample>)> &fillRow) {
    TIFF *tiff = raster.get();
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, static_cast<int>(sizeof(Sample) * 8));
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kRowsPerStrip);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    std::vector<Sample> row(width);
    for (std::uint32_t index = 0; index < height; ++index) {
        fillRow(index, row);
        if (TIFFWriteScanline(tiff, row.data(), index) != 1)
            throw CommandFailure(path.string() + ": the raster cannot be compressed");
    }
    const ZPData bytes = raster.finish();
    ZPAtomicFile file(path);
    ZPError error;
    if (!file.open(&error) || !file.write(bytes, &error) || !file.commit(&error))
        throw CommandFailure(path.string() + ": " + error.failureReason());
}

} // namespace

void writeFloatGeoTIFF(const std::filesystem::path &path, std::uint32_t width, std::uint32_t height,
                       const RasterPlace &place, const std::string &noData,
                       const std::function<void(std::uint32_t row, std::span<float>)> &fillRow) {
    MemoryTIFF raster;
    TIFFSetField(raster.get(), TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);
    TIFFSetField(raster.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    setPlace(raster.get(), place, noData);
    writeRaster(path, raster, width, height, fillRow);
}

void writeByteGeoTIFF(
    const std::filesystem::path &path, std::uint32_t width, std::uint32_t height,
    const RasterPlace &place, const std::string &noData, std::span<const RasterColor, 256> colors,
    const std::function<void(std::uint32_t row, std::span<std::uint8_t>)> &fillRow) {
    MemoryTIFF raster;
    std::vector<std::uint16_t> red, green, blue;
    for (const RasterColor &color : colors) {
        // 0 to 255 as 0 to 65535.
        red.push_back(static_cast<std::uint16_t>(color.red * 257));
        green.push_back(static_cast<std::uint16_t>(color.green * 257));
        blue.push_back(static_cast<std::uint16_t>(color.blue * 257));
    }
    TIFFSetField(raster.get(), TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    TIFFSetField(raster.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
    TIFFSetField(raster.get(), TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(raster.get(), TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
    setPlace(raster.get(), place, noData);
    writeRaster(path, raster, width, height, fillRow);
}
