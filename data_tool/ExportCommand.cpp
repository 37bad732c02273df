#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "data_tool/GeoJSON.h"
#include "data_tool/GeoTIFF.h"
#include "data_tool/Land.h"
#include "game/WQKnownDungeons.h"
#include "game/WQLandBlock.h"
#include "game/WQMapCoordinate.h"
#include "io/ZPAtomicFile.h"
#include "io/ZPInputFile.h"
#include "io/ZPOutputGate.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"
#include "map/land/WQRoadLines.h"
#include "map/overlay/WQPlotFile.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using Position = GeoJSONWriter::Position;

struct Options {
    std::string path, subject, file;
};

constexpr unsigned kSize = WQLandGrid::kSize;
constexpr RasterPlace kLandPlace = {Land::kWest, Land::yOf(kSize - 1), 1 / Land::kPointsPerUnit};

/// Of the raster, which begins in the north, while the land begins in the south.
unsigned landRow(std::uint32_t rasterRow) {
    return kSize - 1 - rasterRow;
}

constexpr std::string_view kNamesBegin = "<PAMDataset>";

/// GIS programs look for more of a raster in a file beside it.
std::filesystem::path besideRaster(const std::string &file) {
    return file + ".aux.xml";
}

/// What such a file says of an older raster under the same name is no longer true.
void removeWhatIsBeside(const std::string &file) {
    const std::filesystem::path path = besideRaster(file);
    std::array<std::byte, kNamesBegin.size()> room;
    const auto begin = ZPReadBeginning(path, room);
    if (begin && std::ranges::equal(*begin, std::as_bytes(std::span(kNamesBegin))))
        std::filesystem::remove(path);
}

/// What an export lacks is a line each.
using Shortcomings = std::vector<std::string>;

void exportHeights(const DataSet &dataSet, const std::string &file, Shortcomings &shortcomings) {
    constexpr float kNoHeight = -9999;
    const Land land(dataSet);
    const auto &heights = land.worldInfo().actualLandHeights();
    writeFloatGeoTIFF(
        file, kSize, kSize, kLandPlace, "-9999", [&](std::uint32_t row, std::span<float> values) {
            std::ranges::transform(
                land.grid().row(landRow(row)), values.begin(), [&](const WQLandPoint &point) {
                    const float height = heights[point.heightIndex];
                    return point.has(WQLandPoint::hasData) && std::isfinite(height) ? height
                                                                                    : kNoHeight;
                });
        });
    removeWhatIsBeside(file);
    if (const std::string fault = land.faultInHeights(); !fault.empty())
        shortcomings.push_back(fault + "; the raster has no data there");
    shortcomings.push_back(land.counts().unreadText());
}

std::string escapedForXML(std::string_view text) {
    std::string escaped;
    for (const char letter : ZPEscapedText(text)) {
        switch (letter) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break; // ends a section as "]]>"
        default: escaped += letter;
        }
    }
    return escaped;
}

void writeCategoryNames(const std::filesystem::path &path,
                        const std::vector<WQLandInfo> &landTypes) {
    std::string text(kNamesBegin);
    text += "\n  <PAMRasterBand band=\"1\">\n    <CategoryNames>\n";
    for (const WQLandInfo &landType : landTypes)
        text += ZPFormat("      <Category>%s</Category>\n", escapedForXML(landType.name()).c_str());
    text += "    </CategoryNames>\n  </PAMRasterBand>\n</PAMDataset>\n";
    ZPError error;
    if (!ZPWriteTextToPath(text, path, &error))
        throw CommandFailure(path.string() + ": " + error.failureReason());
}

void exportTypes(const DataSet &dataSet, const std::string &file, Shortcomings &shortcomings) {
    constexpr std::uint8_t kNoType = 255;
    const Land land(dataSet);
    const auto &landTypes = land.worldInfo().landTypes();
    std::array<RasterColor, 256> colors{};
    for (std::size_t type = 0; type < std::min(landTypes.size(), colors.size()); ++type) {
        const auto byteOf = [](double part) { return static_cast<std::uint8_t>(part * 255 + 0.5); };
        const WQLandInfo::Color &color = landTypes[type].color();
        colors[type] = {byteOf(color.red), byteOf(color.green), byteOf(color.blue)};
    }
    writeByteGeoTIFF(file, kSize, kSize, kLandPlace, "255", colors,
                     [&](std::uint32_t row, std::span<std::uint8_t> values) {
                         std::ranges::transform(land.grid().row(landRow(row)), values.begin(),
                                                [](const WQLandPoint &point) {
                                                    return point.has(WQLandPoint::hasData)
                                                               ? static_cast<std::uint8_t>(
                                                                     point.landType())
                                                               : kNoType;
                                                });
                     });
    writeCategoryNames(besideRaster(file), landTypes);
    shortcomings.push_back(land.counts().unreadText());
}

void exportRoads(const DataSet &dataSet, const std::string &file, Shortcomings &shortcomings) {
    const Land land(dataSet);
    GeoJSONWriter writer;
    for (const std::vector<WQLandPlace> &line : WQTraceRoads(land.grid())) {
        std::vector<Position> positions;
        for (const WQLandPlace place : line)
            positions.emplace_back(Land::xOf(place.column), Land::yOf(place.row));
        if (positions.size() == 1)
            writer.beginPoint(positions.front());
        else
            writer.beginLine(positions);
        writer.endFeature();
    }
    writer.writeToPath(file);
    shortcomings.push_back(land.counts().unreadText());
}

void addBlock(GeoJSONWriter &writer, const WQDataFile &cells, std::uint16_t number,
              WQLandCounts &counts) {
    constexpr double kSide = 0.8;
    const auto files = cells.fileEntriesByLandBlock(number);
    const WQMapLocation corner = WQMapCoordinateForCellID(std::uint32_t{number} << 16);
    const double west = corner.x, south = corner.y, east = west + kSide, north = south + kSide;
    writer.beginPolygon(
        {{west, south}, {east, south}, {east, north}, {west, north}, {west, south}});
    writer.property("block", std::string_view(ZPFormat("%04x", number)));
    writer.property("files", static_cast<std::int64_t>(files.size()));
    if (const auto &last = files.back(); (last.identifier & 0xFFFF) == 0xFFFF) {
        ZPData scratch;
        ++counts.landBlocks;
        const auto bytes = cells.readBytesForFileEntry(last, scratch);
        const auto block = bytes ? ZPRecordWithData<WQLandBlock>(*bytes, nullptr) : std::nullopt;
        counts.unreadBlocks += !block;
        if (block) {
            writer.property("averageHeight", std::int64_t{block->averageHeight()});
            writer.property("hasObjectBlock", block->hasObjectBlock());
            writer.property("isPassable", block->isPassable());
        }
    }
    const auto &names = WQKnownDungeonNames();
    if (const auto name = names.find(number); name != names.end())
        writer.property("dungeon", std::string_view(name->second));
    writer.endFeature();
}

void exportBlocks(const DataSet &dataSet, const std::string &file, Shortcomings &shortcomings) {
    constexpr unsigned kBlocksPerSide = 255;
    const WQDataFile &cells = dataSet.cellDataFile();
    GeoJSONWriter writer;
    WQLandCounts counts;
    for (unsigned column = 0; column < kBlocksPerSide; ++column)
        for (unsigned row = 0; row < kBlocksPerSide; ++row) {
            const auto number = static_cast<std::uint16_t>(column << 8 | row);
            if (!cells.fileEntriesByLandBlock(number).empty())
                addBlock(writer, cells, number, counts);
        }
    writer.writeToPath(file);
    shortcomings.push_back(counts.unreadText());
}

void exportPlaces(const std::string &plotFile, const std::string &file,
                  Shortcomings &shortcomings) {
    if (!std::filesystem::is_regular_file(plotFile))
        throw CommandFailure(plotFile + ": is no plot file");
    const auto points = WQReadPlotFile(plotFile, &shortcomings);
    // Without any of them there is nothing to write.
    if (points.empty() && !shortcomings.empty())
        throw CommandFailure(shortcomings.front());
    GeoJSONWriter writer;
    for (const WQMapPoint &point : points) {
        writer.beginPoint({point.coordinate().x, point.coordinate().y});
        writer.property("type", std::string_view(point.type()));
        writer.property("label", std::string_view(point.label()));
        writer.endFeature();
    }
    writer.writeToPath(file);
}

constexpr char kPlaces[] = "places", kTypes[] = "types";
/// What is made of archives.
constexpr struct {
    const char *name;
    void (*run)(const DataSet &dataSet, const std::string &file, Shortcomings &shortcomings);
} kSubjects[] = {{"heights", &exportHeights},
                 {kTypes, &exportTypes},
                 {"roads", &exportRoads},
                 {"blocks", &exportBlocks}};

void announceOutput(const std::filesystem::path &path) {
    if (ZPError error; !ZPAnnounceOutput(path, &error))
        throw CommandFailure(path.string() + ": " + error.failureReason());
}

int statusAfter(const Shortcomings &shortcomings) {
    int status = kFine;
    for (const std::string &shortcoming : shortcomings)
        if (!shortcoming.empty()) {
            say(shortcoming);
            status = kFoundOrFailed;
        }
    return status;
}

int exportSubject(const Options &options, const GlobalOptions &global) {
    noteDecoders(global);
    Shortcomings shortcomings;
    if (options.subject == kPlaces) {
        ZPNoteInput(options.path);
        announceOutput(options.file);
        exportPlaces(options.path, options.file, shortcomings);
        return statusAfter(shortcomings);
    }
    const DataSet dataSet = global.openDataSet(options.path);
    announceOutput(options.file);
    if (options.subject == kTypes)
        announceOutput(besideRaster(options.file));
    for (const auto &subject : kSubjects)
        if (options.subject == subject.name)
            subject.run(dataSet, options.file, shortcomings);
    return statusOver(dataSet, statusAfter(shortcomings));
}

} // namespace

CommandAction addExportCommand(CLI::App &command) {
    const auto options = std::make_shared<Options>();
    std::vector<std::string> names;
    for (const auto &subject : kSubjects)
        names.emplace_back(subject.name);
    names.emplace_back(kPlaces);
    command.add_option("path", options->path, "Data directory; for places, a plot file")
        ->required();
    command
        .add_option("subject", options->subject,
                    "heights and types make a GeoTIFF, roads, "
                    "blocks and places GeoJSON")
        ->required()
        ->check(CLI::IsMember(names));
    command.add_option("file", options->file, "The file to write")->required();
    return [options](const GlobalOptions &global) { return exportSubject(*options, global); };
}
