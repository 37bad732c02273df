#pragma once

#include "game/WQLandInfo.h"
#include "game/WQMonth.h"
#include "game/WQStoredObject.h"
#include "game/WQTimeOfDay.h"
#include "game/WQWeatherType.h"

#include <array>

/// The region record, portal identifier 0x13000000: what holds for the whole world. Little endian;
/// string16 is a 16-bit length and Windows-1252 bytes, padded to four bytes where aligned; a list
/// is a u32 count and its elements.
///
///     u32 identifier, 2 x u32
///     string16 name (not aligned)
///     u32 width, u32 height, f32 squareLength, u32 landblockSquareLength, u32, 3 x f32
///     256 x f32   actualLandHeights
///     f64, u32, f32, u32 daysPerYear, 2 x u32
///     list of times of day, of day names (string16 aligned), of months
///     u32, 2 x f64
///     list of weather types
///     list of reference sets:      u32, list of (u32, 4 x f32)
///     list of terrain-object sets: u32, list of u32
///     list of land types
///     2 x u32, three lists of (u32, u32), list of 11 x u32, 6 x u32
class WQWorldInfo : public WQPortalObject {
  public:
    using LandHeights = std::array<float, 256>;

    /// The plain numbers. What those without a name mean is not known.
    struct Fields {
        std::uint32_t unknown1 = 0, unknown2 = 0;
        std::string name;
        std::uint32_t width = 0, height = 0;
        float squareLength = 0;
        std::uint32_t landblockSquareLength = 0;
        std::uint32_t unknown3 = 0;
        float unknown4 = 0, unknown5 = 0, unknown6 = 0;
        double unknown7 = 0;
        std::uint32_t unknown8 = 0;
        float unknown9 = 0;
        std::uint32_t daysPerYear = 0;
        std::uint32_t unknown10 = 0, unknown11 = 0, unknown12 = 0;
        double unknown13 = 0, unknown14 = 0;
    };

    /// Weather models have one field more from data version 1394 of the client data's portal
    /// archive on.
    WQWorldInfo(ZPDataCursor &cursor, ZPGorvaneClientData *clientData);

    const Fields &fields() const { return _fields; }
    /// Real heights by the height index of land blocks.
    const LandHeights &actualLandHeights() const { return _actualLandHeights; }
    const std::vector<WQTimeOfDay> &times() const { return _times; }
    const std::vector<std::string> &days() const { return _days; }
    const std::vector<WQMonth> &months() const { return _months; }
    const std::vector<WQWeatherType> &weatherTypes() const { return _weatherTypes; }
    const std::vector<WQLandInfo> &landTypes() const { return _landTypes; }

    // Sections that are kept as text only, or as text too.
    const std::string &t20RefString() const { return _t20RefString; }
    const std::string &terrainObjectsString() const { return _terrainObjectsString; }
    const std::string &landTypesString() const { return _landTypesString; }
    const std::string &landTexturesString() const { return _landTexturesString; }

    const char *className() const override { return "WQWorldInfo"; }
    using ZPGorvaneStoredObject::saveToPath;
    /// Writes everything as text.
    bool saveToPath(const std::filesystem::path &path, ZPError *error = nullptr) const override;
    /// The region record is never written back: leaves the buffer as it is.
    void writeToData(ZPData &) const {}

  private:
    void readHeader(ZPDataCursor &cursor);
    void readCalendarAndWeather(ZPDataCursor &cursor);
    void readReferenceSets(ZPDataCursor &cursor);
    void readTerrainObjects(ZPDataCursor &cursor);
    void readLandTypes(ZPDataCursor &cursor);
    void readLandTextures(ZPDataCursor &cursor);

    Fields _fields;
    LandHeights _actualLandHeights{};
    std::vector<WQTimeOfDay> _times;
    std::vector<std::string> _days;
    std::vector<WQMonth> _months;
    std::vector<WQWeatherType> _weatherTypes;
    std::vector<WQLandInfo> _landTypes;
    std::string _t20RefString;
    std::string _terrainObjectsString;
    std::string _landTypesString;
    std::string _landTexturesString;
};
