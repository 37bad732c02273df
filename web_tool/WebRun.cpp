#include "web_tool/WebRun.h"

#include "io/ZPAtomicFile.h"
#include "io/ZPStage.h"
#include "io/ZPSystemLog.h"
#include "tool/PlotFile.h"
#include "web/WQWebPage.h"

#include <cstdlib>

namespace {

std::unique_ptr<WQClientData> loadClientData(const std::string &path) {
    const ZPStage stage("open and index");
    auto clientData = std::make_unique<WQClientData>(path);
    clientData->cellDataFile()->loadFileEntriesIfNecessary();
    return clientData;
}

std::optional<WQWebLand> readLand(WQClientData &clientData,
                                  const WQDataFileComparison *comparison) {
    const ZPStage stage("read blocks");
    ZPError error;
    auto land = WQWebLand::readLand(clientData, comparison, &error);
    if (!land)
        ZPLog("Error: %s", error.failureReason().c_str());
    return land;
}

bool writePage(const WQWebContent &content, const std::string &path) {
    std::string page;
    {
        const ZPStage stage("pack");
        page = WQWebPageWithContent(content);
    }
    const ZPStage stage("write");
    ZPError error;
    if (ZPWriteTextToPath(page, path, &error))
        return true;
    ZPLog("Error: %s: %s", path.c_str(), error.failureReason().c_str());
    return false;
}

} // namespace

int runWeb(const WebOptions &options) {
    WQWebContent content;
    content.title = options.title;
    std::vector<WQMapPoint> places;
    if (options.plotPath)
        places = readPlotFile(*options.plotPath);
    content.places = places;

    const auto clientData = loadClientData(options.inputPath);
    content.worldInfo = clientData->worldInfo();
    if (content.worldInfo == nullptr)
        ZPLog("Error: there is no region record (13000000); the land is taken to be flat.");

    std::unique_ptr<WQClientData> oldClientData;
    std::optional<WQDataFileComparison> comparison;
    std::optional<WQWebLand> olderLand;
    if (options.oldPath) {
        oldClientData = loadClientData(*options.oldPath);
        olderLand = readLand(*oldClientData, nullptr);
        if (!olderLand)
            return EXIT_FAILURE;
        const ZPStage stage("compare");
        comparison.emplace(oldClientData->cellDataFile(), clientData->cellDataFile());
        comparison->buildComparison();
        content.olderLand = &*olderLand;
    }
    const auto land = readLand(*clientData, comparison ? &*comparison : nullptr);
    if (!land)
        return EXIT_FAILURE;
    content.land = &*land;
    return writePage(content, options.outputPath) ? EXIT_SUCCESS : EXIT_FAILURE;
}
