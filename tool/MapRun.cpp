#include "tool/MapRun.h"

#include "game/WQKnownDungeons.h"
#include "io/ZPOutputGate.h"
#include "io/ZPStage.h"
#include "io/ZPSystemLog.h"
#include "map/overlay/WQPlotFile.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace {

constexpr int kUsageError = 2;

std::unique_ptr<WQClientData> loadClientData(const std::string &path) {
    const ZPStage stage("open and index");
    auto clientData = std::make_unique<WQClientData>(path);
    clientData->cellDataFile()->loadFileEntriesIfNecessary();
    return clientData;
}

/// What could not be read for it is added to the shortcomings.
void configure(WQMapper &mapper, const Options &options, std::vector<std::string> &shortcomings) {
    // The scheme replaces the whole table of colours, so that snow and water leave no trace in the
    // picture. The order is part of how the program behaves.
    if (options.snow)
        mapper.updateSnow();
    if (options.falseColorWater)
        mapper.falseColorWater();
    mapper.setShouldUseAlpha(options.useAlpha);
    mapper.setShouldDrawGrid(options.drawGrid);
    mapper.setScale(static_cast<std::uint64_t>(options.scale));
    mapper.updateLandColors(WQMapColorScheme());
    mapper.setLightVector({-0.5f, 0.5f, 0.707107f});
    if (options.plotPath)
        mapper.setCoordinates(WQReadPlotFile(*options.plotPath, &shortcomings));
}

/// Logs "error <what>: <error>", with (null) for a failure that came without an error.
void logFailure(const char *what, const ZPError &error) {
    ZPLog("error %s: %s", what, error.domain.empty() ? "(null)" : error.description().c_str());
}

/// Whether a file may be written, before the work for it is done; says why not.
bool announceOutput(const char *what, const std::string &path) {
    ZPError error;
    if (ZPAnnounceOutput(path, &error))
        return true;
    ZPLog("error %s: %s: %s; nothing is drawn", what, path.c_str(), error.failureReason().c_str());
    return false;
}

void hintAtOrder(const Options &options) {
    std::error_code fault;
    if (std::filesystem::is_directory(options.givenOutputPath, fault) &&
        !std::filesystem::is_directory(options.inputPath, fault))
        ZPLog("%s is no directory, but %s is one: the directory with the archives comes first, "
              "then the picture.",
              options.inputPath.c_str(), options.givenOutputPath.c_str());
}

} // namespace

int MapRun::run(int argc, char *argv[]) {
    // Builds the shared table and logs its size, ahead of everything else.
    WQKnownDungeonNames();
    if (argc < 3) {
        printUsage();
        return EXIT_SUCCESS;
    }
    const auto options = parseOptions(argc, argv);
    if (!options) {
        printUsage();
        return kUsageError;
    }
    drawAsAsked(*options);
    return EXIT_SUCCESS;
}

void MapRun::drawAsAsked(const Options &options) {
    ZPLog("inputPath: %s", options.inputPath.c_str());
    ZPLog("outputPath: %s", options.outputPath.c_str());
    ZPLog("old data path: %s", ZPTextOrNull(options.oldPath ? &*options.oldPath : nullptr));

    if (options.oldPath)
        _oldClientData = loadClientData(*options.oldPath);
    _clientData = loadClientData(options.inputPath);
    _mapper = std::make_unique<WQMapper>(*_clientData);
    std::vector<std::string> shortcomings;
    configure(*_mapper, options, shortcomings);
    const bool savesChanges = options.changesPath && _oldClientData != nullptr;
    if (!announceOutput(options.heightMap ? "saving height map" : "saving map",
                        options.outputPath) ||
        (savesChanges && !announceOutput("saving changes", *options.changesPath)))
        return;
    const bool isSaved = options.heightMap ? saveHeightMap(options) : saveMap(options);
    if (savesChanges)
        saveChanges(options);
    // At the very end, where it cannot be overlooked: the run looks like a success otherwise.
    if (isSaved) {
        if (options.heightMap)
            shortcomings.clear(); // nothing is laid over it
        std::ranges::copy(_mapper->shortcomings(), std::back_inserter(shortcomings));
        for (const std::string &shortcoming : shortcomings)
            ZPLog("%s", shortcoming.c_str());
    }
    hintAtOrder(options);
}

bool MapRun::saveHeightMap(const Options &options) {
    ZPError error;
    const bool isSaved = _mapper->saveHeightMapToURL(options.outputPath, &error);
    if (!isSaved)
        logFailure("saving height map", error);
    return isSaved;
}

bool MapRun::saveMap(const Options &options) {
    ZPError error;
    _mapper->setOldClientData(_oldClientData.get());
    const bool isSaved = _mapper->saveMapToURL(options.outputPath, &error);
    if (!isSaved)
        logFailure("saving map", error);
    return isSaved;
}

void MapRun::saveChanges(const Options &options) {
    ZPError error;
    if (!_mapper->saveChangesToURL(*options.changesPath, &error))
        logFailure("saving changes", error);
}
