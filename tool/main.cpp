#include "game/WQKnownDungeons.h"
#include "io/ZPStage.h"
#include "io/ZPSystemLog.h"
#include "map/WQMapper.h"
#include "tool/Options.h"
#include "tool/PlotFile.h"

#include <cstdio>
#include <cstdlib>

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

void saveHeightMap(WQMapper &mapper, const Options &options) {
    ZPError error;
    if (!mapper.saveHeightMapToURL(options.outputPath, &error))
        logFailure("saving height map", error);
}

void saveMap(WQMapper &mapper, const Options &options, WQClientData *oldClientData) {
    ZPError error;
    mapper.setOldClientData(oldClientData);
    if (!mapper.saveMapToURL(options.outputPath, &error))
        logFailure("saving map", error);
}

void saveChanges(WQMapper &mapper, const Options &options) {
    ZPError error;
    if (!mapper.saveChangesToURL(*options.changesPath, &error))
        logFailure("saving changes", error);
}

[[noreturn]] void run(const Options &options) {
    ZPLog("inputPath: %s", options.inputPath.c_str());
    ZPLog("outputPath: %s", options.outputPath.c_str());
    ZPLog("old data path: %s", ZPTextOrNull(options.oldPath ? &*options.oldPath : nullptr));

    const auto oldClientData = options.oldPath ? loadClientData(*options.oldPath) : nullptr;
    const auto clientData = loadClientData(options.inputPath);
    WQMapper mapper(*clientData);
    configure(mapper, options);
    if (options.heightMap)
        saveHeightMap(mapper, options);
    else
        saveMap(mapper, options, oldClientData.get());
    if (options.changesPath && oldClientData != nullptr)
        saveChanges(mapper, options);

    // Everything is written. The system takes memory back faster than it is freed piece by piece.
    std::fflush(stdout);
    std::quick_exit(EXIT_SUCCESS);
}

} // namespace

int main(int argc, char *argv[]) {
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
    run(*options);
}
