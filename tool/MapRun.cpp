#include "tool/MapRun.h"

#include "game/WQKnownDungeons.h"
#include "io/ZPStage.h"
#include "io/ZPSystemLog.h"
#include "tool/PlotFile.h"

#include <cstdlib>
#include <exception>
#include <new>

namespace {

constexpr int kUsageError = 2;

std::unique_ptr<WQClientData> loadClientData(const std::string &path) {
    const ZPStage stage("open and index");
    auto clientData = std::make_unique<WQClientData>(path);
    clientData->cellDataFile()->loadFileEntriesIfNecessary();
    return clientData;
}

void configure(WQMapper &mapper, const Options &options) {
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
        mapper.setCoordinates(readPlotFile(*options.plotPath));
}

/// Logs "error <what>: <error>", with (null) for a failure that came without an error.
void logFailure(const char *what, const ZPError &error) {
    ZPLog("error %s: %s", what, error.domain.empty() ? "(null)" : error.description().c_str());
}

} // namespace

int MapRun::run(int argc, char *argv[]) {
    try {
        return runWithArguments(argc, argv);
    } catch (const std::bad_alloc &) {
        ZPLog("Error: there is not enough memory to go on.");
    } catch (const std::exception &exception) {
        ZPLog("Error: %s", exception.what());
    }
    return EXIT_SUCCESS;
}

int MapRun::runWithArguments(int argc, char *argv[]) {
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
    configure(*_mapper, options);
    const bool isSaved = options.heightMap ? saveHeightMap(options) : saveMap(options);
    if (options.changesPath && _oldClientData != nullptr)
        saveChanges(options);
    // At the very end, where it cannot be overlooked: the run looks like a success otherwise.
    if (isSaved)
        for (const std::string &shortcoming : _mapper->shortcomings())
            ZPLog("%s", shortcoming.c_str());
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
