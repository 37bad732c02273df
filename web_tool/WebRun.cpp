#include "web_tool/WebRun.h"

#include "io/ZPAtomicFile.h"
#include "io/ZPOutputGate.h"
#include "io/ZPStage.h"
#include "io/ZPSystemLog.h"
#include "map/overlay/WQPlotFile.h"
#include "web/WQWebPage.h"
#include "web/WQWebPlaces.h"

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

/// What the page lacks of the land of an archive.
void noteLosses(const WQDataFile &cellDataFile, const WQWebLand &land,
                std::vector<std::string> &shortcomings) {
    const std::string path = cellDataFile.path().string();
    if (const std::string unread = land.counts.unreadText(); !unread.empty())
        shortcomings.push_back(path + ": " + unread);
    if (cellDataFile.findings().countWithoutFile() > 0)
        shortcomings.push_back(path + ": land may be missing, since the archive is damaged; "
                                      "`plotterra-data check` says where");
}

bool fail(const std::string &path, const ZPError &error) {
    ZPLog("Error: %s: %s", path.c_str(), error.failureReason().c_str());
    return false;
}

bool writePage(const WQWebContent &content, const std::string &path) {
    std::string page;
    {
        const ZPStage stage("pack");
        page = WQWebPageWithContent(content);
    }
    const ZPStage stage("write");
    ZPError error;
    if (!ZPWriteTextToPath(page, path, &error))
        return fail(path, error);
    ZPLog("The page is written to %s", path.c_str());
    return true;
}

} // namespace

int runWeb(const WebOptions &options) {
    std::vector<std::string> shortcomings;
    WQWebContent content;
    content.title = options.title;
    std::vector<WQMapPoint> places;
    if (options.plotPath) {
        const auto read = WQReadPlotFile(*options.plotPath, &shortcomings);
        places = WQPlacesForPage(read);
        if (places.size() < read.size())
            shortcomings.push_back(ZPFormat("%zu of %zu places are not on the page",
                                            read.size() - places.size(), read.size()));
    }
    content.places = places;

    const auto clientData = loadClientData(options.inputPath);
    content.worldInfo = clientData->worldInfo();
    if (content.worldInfo == nullptr)
        shortcomings.emplace_back(
            "there is no region record (13000000); the land is taken to be flat");
    else if (const std::string fault = content.worldInfo->faultInLandHeights(); !fault.empty())
        ZPLog("Error: %s; they are taken to be 0", fault.c_str());

    const auto oldClientData = options.oldPath ? loadClientData(*options.oldPath) : nullptr;
    ZPError error;
    // Whoever names an archive as the page is mistaken, whatever ending is added to its name.
    if (!ZPMayWrite(options.givenOutputPath, &error) ||
        !ZPAnnounceOutput(options.outputPath, &error)) {
        fail(options.givenOutputPath, error);
        return EXIT_FAILURE;
    }
    std::optional<WQDataFileComparison> comparison;
    std::optional<WQWebLand> olderLand;
    if (oldClientData != nullptr) {
        olderLand = readLand(*oldClientData, nullptr);
        if (!olderLand)
            return EXIT_FAILURE;
        const ZPStage stage("compare");
        comparison.emplace(oldClientData->cellDataFile(), clientData->cellDataFile());
        comparison->leaveOutUnreadableFiles();
        comparison->buildComparison();
        noteLosses(*oldClientData->cellDataFile(), *olderLand, shortcomings);
        if (const std::size_t count = comparison->leftOutCount(); count > 0)
            shortcomings.push_back(ZPFormat(
                "%zu files count as unchanged, since one world has them unreadable", count));
        content.olderLand = &*olderLand;
    }
    const auto land = readLand(*clientData, comparison ? &*comparison : nullptr);
    if (!land)
        return EXIT_FAILURE;
    content.land = &*land;
    noteLosses(*clientData->cellDataFile(), *land, shortcomings);
    if (!writePage(content, options.outputPath))
        return EXIT_FAILURE;
    // At the very end, where it cannot be overlooked.
    for (const std::string &shortcoming : shortcomings)
        ZPLog("Error: %s", shortcoming.c_str());
    return shortcomings.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}
