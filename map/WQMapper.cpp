#include "map/WQMapper.h"

#include "io/ZPBackgroundWork.h"
#include "io/ZPStage.h"
#include "io/ZPSystemLog.h"
#include "map/land/WQLandGridBuilder.h"
#include "map/overlay/WQPlotFile.h"
#include "map/png/WQPNGFile.h"

#include <limits>

namespace {

/// The grid of land blocks that shares are reckoned by has 256 columns and rows, one more than the
/// world has.
constexpr double kTotalBlocks = 65536;

/// Empty when the archive has files.
std::string reasonForNoFiles(const WQDataFile &dataFile) {
    const char *path = dataFile.path().c_str();
    if (!dataFile.openingFault().empty())
        return ZPFormat("%s cannot be opened: %s", path, dataFile.openingFault().c_str());
    return dataFile.fileCount() == 0 ? ZPFormat("no files are found in %s", path) : std::string();
}

/// Empty when there is land to see.
std::string reasonForNoLand(const WQDataFile *cellDataFile, const WQLandCounts &counts) {
    if (cellDataFile == nullptr)
        return "there is no cell archive";
    const char *path = cellDataFile->path().c_str();
    if (counts.drawnBlocks != 0 || cellDataFile->fileCount() == 0)
        return reasonForNoFiles(*cellDataFile);
    return counts.landBlocks == 0 ? ZPFormat("none of the files in %s is a land block (%zu)", path,
                                             cellDataFile->fileCount())
                                  : ZPFormat("none of the land blocks in %s can be read (%u)", path,
                                             counts.landBlocks);
}

/// `portal` may be null.
std::string reasonForNoRegionRecord(const WQDataFile *portal) {
    const std::string reason = portal != nullptr ? reasonForNoFiles(*portal) : std::string();
    if (!reason.empty())
        return reason;
    const std::string path = portal != nullptr ? portal->path().string() + ": " : std::string();
    return path + "the region record (13000000) is not there or cannot be read";
}

/// Empty where all files of the archive are known.
std::string textOfDamage(const WQDataFile &dataFile) {
    return dataFile.findings().countWithoutFile() > 0
               ? ZPFormat("Land may be missing, since %s is damaged; `plotterra-data check` says "
                          "where",
                          dataFile.path().c_str())
               : std::string();
}

bool saveImage(const WQImage *image, const std::filesystem::path &path, const char *kind,
               ZPError *error) {
    ZPError cause;
    if (image != nullptr && WQWritePNG(*image, path, &cause))
        return true;
    if (image != nullptr)
        ZPLog("%s: %s", path.c_str(), cause.description().c_str());
    return ZPFail(error,
                  {kWQMapperErrorDomain,
                   1,
                   {{NSLocalizedFailureReasonErrorKey,
                     ZPFormat("Failed to generate %s (CGImageDestinationFinalize()).", kind)}}});
}

} // namespace

WQMapper::WQMapper(WQClientData &clientData) : _clientData(clientData) {
    setLightVector({-1, 1, 0});
    ZPLog("normalized light vector: (%11f %11f %11f)", static_cast<double>(_lightVector.x),
          static_cast<double>(_lightVector.y), static_cast<double>(_lightVector.z));
}

WQMapper::~WQMapper() = default;

void WQMapper::setScale(std::uint64_t scale) {
    if (scale < 1 || scale > 8)
        ZPLog("Error: scale (%llu) must be 1-8", static_cast<unsigned long long>(scale));
    else
        _scale = scale;
}

void WQMapper::updateLandColors(const WQMapColorScheme &scheme) {
    WQLandColorTable::shared().updateLandColors(scheme);
}

// -- the land

bool WQMapper::setupLandBlockData() {
    return setupLandBlockData(true);
}

bool WQMapper::setupLandBlockData(bool comparesWithOldData) {
    const WQWorldInfo *worldInfo = _clientData.worldInfo();
    _landGrid = WQLandGrid::allocate();
    if (_landGrid == nullptr) {
        ZPLog("Error: failed to malloc() memory for land data.");
        return false;
    }
    if (worldInfo != nullptr)
        _landGrid->setLandHeights(worldInfo->actualLandHeights());
    else
        ZPLog("Error: there is no region record (13000000); the land is taken to be flat.");

    _comparison.reset();
    _shortcomings.clear();
    if (worldInfo != nullptr)
        if (const std::string fault = worldInfo->faultInLandHeights(); !fault.empty())
            _shortcomings.push_back(fault + "; they are taken to be 0");
    WQDataFile *cellDataFile = _clientData.cellDataFile();
    if (cellDataFile != nullptr)
        cellDataFile->loadFileEntriesIfNecessary();
    if (comparesWithOldData && _oldClientData != nullptr)
        compareWithOldData();

    const ZPStage stage("read blocks");
    WQLandCounts counts;
    if (cellDataFile != nullptr) {
        counts = WQFillLandGrid(*_landGrid, *cellDataFile, _comparison.get());
        // Unmapping an archive of full size takes as long as shading the land, and can go beside
        // it.
        _memoryRelease = ZPDoInBackground([cellDataFile] { cellDataFile->didReadAllFiles(); });
    }
    ZPLog("land block count: %u (%.1f %%), object block count: %u (%.1f %% of total area, %.1f %% "
          "of used land)",
          counts.landBlocks, counts.landBlocks * 100.0 / kTotalBlocks, counts.objectBlocks,
          counts.objectBlocks * 100.0 / kTotalBlocks,
          counts.landBlocks != 0 ? counts.objectBlocks * 100.0 / counts.landBlocks
                                 : std::numeric_limits<double>::quiet_NaN());
    noteWhatIsMissing(counts, comparesWithOldData);
    return true;
}

void WQMapper::noteWhatIsMissing(const WQLandCounts &counts, bool isMap) {
    const WQDataFile *cellDataFile = _clientData.cellDataFile();
    const auto note = [this](const std::string &line) {
        if (!line.empty())
            _shortcomings.push_back(line);
    };
    if (isMap && counts.drawnBlocks > 0 && _clientData.worldInfo() == nullptr)
        note("The land is drawn as if it were flat: " +
             reasonForNoRegionRecord(_clientData.portalDataFile()));
    if (isMap && _overlayChoice.coordinates)
        note(WQTextOfPlacesOffTheMap(*_overlayChoice.coordinates));
    if (counts.drawnBlocks > 0)
        note(counts.unreadText()); // else all of them, which the reason for no land says
    if (cellDataFile != nullptr)
        note(textOfDamage(*cellDataFile));
    if (const std::string reason = reasonForNoLand(cellDataFile, counts); !reason.empty())
        note("The picture shows no land: " + reason);
}

/// Without an archive on either side the comparison finds nothing.
void WQMapper::compareWithOldData() {
    const ZPStage stage("compare");
    WQDataFile *oldCellDataFile = _oldClientData->cellDataFile();
    WQDataFile *cellDataFile = _clientData.cellDataFile();
    _comparison = std::make_unique<WQDataFileComparison>(oldCellDataFile, cellDataFile);
    _comparison->buildComparison();
    if (cellDataFile == nullptr)
        return; // no land to be without a mark
    if (oldCellDataFile == nullptr)
        _shortcomings.push_back("No land counts as changed: there is no older cell archive");
    else if (const std::string reason = reasonForNoFiles(*oldCellDataFile); !reason.empty())
        _shortcomings.push_back("All land counts as added: " + reason);
    else {
        if (const std::size_t count = _comparison->unreadableCount1(); count > 0)
            _shortcomings.push_back(
                ZPFormat("%zu files of %s could not be read, and count as added", count,
                         oldCellDataFile->path().c_str()));
        if (const std::string damage = textOfDamage(*oldCellDataFile); !damage.empty())
            _shortcomings.push_back(damage);
    }
    if (const std::size_t count = _comparison->unreadableCount2(); count > 0)
        _shortcomings.push_back(ZPFormat("%zu files of %s could not be read, and count as removed",
                                         count, cellDataFile->path().c_str()));
}

// -- pictures

void WQMapper::logImageSize(std::size_t bytesPerPixel) const {
    const std::size_t size = kWQLandSize * _scale;
    ZPLog("landsize: %u x %u, scale: %llu, imageSize: %zu x %zu, bytesPerPixel: %zu, bytesPerRow: "
          "%zu",
          kWQLandSize, kWQLandSize, static_cast<unsigned long long>(_scale), size, size,
          bytesPerPixel, size * bytesPerPixel);
}

WQTerrainShader WQMapper::terrainShader(bool marksChanges) const {
    return {WQLandColorTable::shared(),
            {_lightVector, static_cast<float>(_fudgeFactor), _shouldUseAlpha, marksChanges}};
}

std::unique_ptr<WQImage> WQMapper::newBaseMap() {
    logImageSize(sizeof(WQPixel));
    if (!setupLandBlockData())
        return nullptr;
    ZPLog("diffuseFactor for deep water: %g", WQFlatDiffuseFactor(_lightVector));
    ZPLog("--------------------------------------------------------------");
    const auto size = static_cast<unsigned long long>(kWQLandSize * _scale);
    ZPLog("initialBitmapContext: %llu x %llu, 8 bits a component, RGBA", size, size);
    WQShadedLand land = shadeLand();
    ZPLog("Done that part.");
    ZPLog("minDiff: %g, maxDiff: %g", land.light.minimum, land.light.maximum);
    auto image = std::make_unique<WQColorImage>(_scale, std::move(land.pixels));
    image->setDrawing(WQDrawOverlays(overlayStyle()));
    return image;
}

/// Uses the land up.
WQShadedLand WQMapper::shadeLand() {
    const ZPStage stage("shade");
    return WQShadeLand(std::move(_landGrid), terrainShader(_oldClientData != nullptr));
}

std::unique_ptr<WQImage> WQMapper::newHeightMap() {
    logImageSize(sizeof(std::uint8_t));
    if (!setupLandBlockData(false))
        return nullptr;
    ZPLargeArray<std::uint8_t> levels(std::size_t{kWQLandSize} * kWQLandSize);
    if (levels.empty())
        return nullptr;
    for (unsigned y = 0; y < kWQLandSize; ++y)
        std::ranges::transform(_landGrid->row(y), levels.data() + y * std::size_t{kWQLandSize},
                               &WQLandPoint::heightIndex);
    freeLandBlockData();
    return std::make_unique<WQGreyImage>(_scale, std::move(levels));
}

bool WQMapper::saveMapToURL(const std::filesystem::path &path, ZPError *error) {
    return saveImage(newBaseMap().get(), path, "map image", error);
}

bool WQMapper::saveHeightMapToURL(const std::filesystem::path &path, ZPError *error) {
    return saveImage(newHeightMap().get(), path, "height map image", error);
}

bool WQMapper::saveChangesToURL(const std::filesystem::path &path, ZPError *error) const {
    return _comparison != nullptr && _comparison->saveLandBlockSummaryToURL(&path, error);
}

// -- viewport

void WQMapper::setupLand() {
    ZPLog("%s", "-[WQMapper setupLand]");
    _viewport.setupTypes();
}

void WQMapper::updateLand() {
    ZPLog("%s", "-[WQMapper updateLand]");
    _viewport.updateTypes(*_landGrid);
}

std::span<const std::uint8_t> WQMapper::mapLand() const {
    ZPLog("%s", "-[WQMapper mapLand]");
    return _viewport.types();
}

void WQMapper::updateBitmap() {
    _viewport.updateBitmap(*_landGrid, terrainShader(false));
}
