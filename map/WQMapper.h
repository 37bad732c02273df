#pragma once

#include "game/WQClientData.h"
#include "game/WQDataFileComparison.h"
#include "map/WQLandImage.h"
#include "map/land/WQLandColorTable.h"
#include "map/land/WQLandGrid.h"
#include "map/land/WQLandShading.h"
#include "map/land/WQMapViewport.h"
#include "map/overlay/WQOverlayTable.h"

#include <filesystem>
#include <future>
#include <memory>
#include <vector>

struct WQLandCounts;

inline constexpr char kWQMapperErrorDomain[] = "WQMapperErrorDomain";

/// The map renderer: its settings, and the pictures and the report that it makes of a data set.
///
/// Settings and the land colour table, which all renderers share, must not change while a picture
/// is made. Each picture reads the land blocks anew.
class WQMapper {
  public:
    /// The client data must outlive the renderer. Pictures of that of no directory are all sea.
    explicit WQMapper(WQClientData &clientData);
    ~WQMapper();
    WQMapper(const WQMapper &) = delete;
    WQMapper &operator=(const WQMapper &) = delete;

    WQClientData &clientData() const { return _clientData; }
    /// An older data set to compare with, or null; it must outlive the renderer. A comparison with
    /// one of no directory finds nothing, neither lists nor sets.
    WQClientData *oldClientData() const { return _oldClientData; }
    void setOldClientData(WQClientData *clientData) { _oldClientData = clientData; }
    /// Points without land data are transparent.
    bool shouldUseAlpha() const { return _shouldUseAlpha; }
    void setShouldUseAlpha(bool use) { _shouldUseAlpha = use; }
    /// Draws the grid with compass, title and tribute.
    bool shouldDrawGrid() const { return _overlayChoice.grid; }
    void setShouldDrawGrid(bool draw) { _overlayChoice.grid = draw; }
    /// Pixels of the picture for each land point along each axis.
    std::uint64_t scale() const { return _scale; }
    /// 1 to 8; any other value is logged and changes nothing.
    void setScale(std::uint64_t scale);
    /// The places to mark, none where no list was set.
    const std::optional<std::vector<WQMapPoint>> &coordinates() const {
        return _overlayChoice.coordinates;
    }
    void setCoordinates(std::optional<std::vector<WQMapPoint>> coordinates) {
        _overlayChoice.coordinates = std::move(coordinates);
    }
    /// All that is laid over the map, the two above among it.
    WQOverlayChoice &overlayChoice() { return _overlayChoice; }
    /// Unit vector toward the light: x east, y north, z up.
    ZPVector3 lightVector() const { return _lightVector; }
    /// Keeps the direction of a vector that is not zero.
    void setLightVector(ZPVector3 vector) { _lightVector = WQNormalizedVector(vector); }
    /// A factor to every colour; 255 leaves them as they are.
    double fudgeFactor() const { return _fudgeFactor; }
    void setFudgeFactor(double factor) { _fudgeFactor = factor; }
    /// Of the last map that was made with old client data, or null.
    const WQDataFileComparison *comparison() const { return _comparison.get(); }
    void setComparison(std::unique_ptr<WQDataFileComparison> comparison) {
        _comparison = std::move(comparison);
    }

    // The land colours, one table for all renderers.
    void updateLandColors(const WQMapColorScheme &scheme);
    void updateSnow() { WQLandColorTable::shared().updateSnow(); }
    void falseColorWater() { WQLandColorTable::shared().falseColorWater(); }
    void dumpColors() const { WQLandColorTable::shared().dumpColors(); }

    /// Compares with the old client data, if any, and reads the land, loading indexes if necessary;
    /// false when there is no memory for it.
    [[nodiscard]] bool setupLandBlockData();
    /// What the land that was last set up lacks because of an archive, and which and why, and
    /// places that lie off the map: a line each, none as a rule.
    const std::vector<std::string> &shortcomings() const { return _shortcomings; }
    void freeLandBlockData() { _landGrid.reset(); }
    /// Null unless the land is set up. Making a picture sets it up anew and uses it up.
    [[nodiscard]] const WQLandGrid *landGrid() const { return _landGrid.get(); }
    ZPVector3 calculateNormal(const WQLandGrid &landGrid, unsigned atX, unsigned y) const {
        return WQTerrainShader::calculateNormal(landGrid, atX, y);
    }
    /// The land must be set up.
    unsigned landTypeAtPoint(double x, double y) const { return _landGrid->landTypeAtPoint(x, y); }
    WQImagePoint unscaledPointForMapLocation(WQMapLocation location) const {
        return WQUnscaledPointForMapLocation(location);
    }
    WQImagePoint imagePointForMapLocation(WQMapLocation location) const {
        return WQImagePointForMapLocation(location, _scale);
    }

    /// The coloured map; null when there is no memory for it.
    [[nodiscard]] std::unique_ptr<WQImage> newBaseMap();
    /// The height indexes as grey levels, black where there is no data; null when there is no
    /// memory for it.
    [[nodiscard]] std::unique_ptr<WQImage> newHeightMap();
    // Write a PNG file. Any failure is code 1 of "WQMapperErrorDomain", and leaves no file.
    [[nodiscard]] bool saveMapToURL(const std::filesystem::path &path, ZPError *error = nullptr);
    [[nodiscard]] bool saveHeightMapToURL(const std::filesystem::path &path,
                                          ZPError *error = nullptr);
    /// Writes which land blocks the last map found changed. Without a comparison it fails and
    /// leaves the error untouched.
    [[nodiscard]] bool saveChangesToURL(const std::filesystem::path &path,
                                        ZPError *error = nullptr) const;

    // The parts of what is laid over the map, for a drawing of this renderer's scale.
    void drawGridLinesInContext(WQDrawing &context) const;
    void drawCompassInContext(WQDrawing &context) const;
    void drawTitleInContext(WQDrawing &context) const;
    void drawTributeInContext(WQDrawing &context) const;
    /// Not part of the map.
    void drawFeaturesBoxInContext(WQDrawing &context) const;
    void drawMarkersAtCoordinatesInContext(WQDrawing &context) const;
    void drawMapPoint(const WQMapPoint &point, WQDrawing &inContext) const;
    void drawMarkerAtCoordinate(WQMapLocation coordinate, WQDrawing &inContext) const;
    void drawMarkerAtPoint(WQImagePoint point, WQDrawing &inContext) const;
    /// Not part of the map; places points as at scale 1.
    void highlightLowBits(const WQLandGrid &landGrid, WQDrawing &inContext) const;

    // A window of 512 by 512 points on the land, which must be set up.
    std::uint32_t XOffset() const { return _viewport.xOffset; }
    void setXOffset(std::uint32_t offset) { _viewport.xOffset = offset; }
    std::uint32_t YOffset() const { return _viewport.yOffset; }
    void setYOffset(std::uint32_t offset) { _viewport.yOffset = offset; }
    void setupLand();
    void updateLand();
    /// Land types, row by row from the south; empty before `setupLand`.
    std::span<const std::uint8_t> mapLand() const;
    void setupBitmapContext() { _viewport.setupBitmap(); }
    void updateBitmap();
    /// Row 0 at the north; empty before `setupBitmapContext`.
    std::span<const WQPixel> bitmapContext() const { return _viewport.bitmap(); }

  private:
    [[nodiscard]] bool setupLandBlockData(bool comparesWithOldData);
    void compareWithOldData();
    void noteWhatIsMissing(const WQLandCounts &counts, bool isMap);
    void logImageSize(std::size_t bytesPerPixel) const;
    WQTerrainShader terrainShader(bool marksChanges) const;
    WQShadedLand shadeLand();
    WQOverlayStyle overlayStyle() const;

    WQClientData &_clientData;
    WQClientData *_oldClientData = nullptr;
    bool _shouldUseAlpha = false;
    std::uint64_t _scale = 1;
    WQOverlayChoice _overlayChoice;
    ZPVector3 _lightVector;
    double _fudgeFactor = 255.0;
    std::unique_ptr<WQDataFileComparison> _comparison;
    std::unique_ptr<WQLandGrid> _landGrid;
    std::vector<std::string> _shortcomings;
    WQMapViewport _viewport;
    std::future<void> _memoryRelease;
    /// Finding fonts takes a while, so what was found is kept from one drawing to the next.
    mutable WQTypesetter _typesetter;
};
