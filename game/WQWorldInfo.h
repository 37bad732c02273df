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
///     list of reference sets, of terrain-object sets, of land types
///     the land's textures
///
/// The whole record is gone through when it is decoded, so that one that ends too early makes no
/// object; of the sections of variable length only the places are kept, with the record's bytes.
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
        /// Nothing in the record sets it.
        std::string ustr10;
    };

    /// Asks the client data, if any, for the data version of its portal archive, by which weather
    /// models differ.
    WQWorldInfo(ZPDataCursor &cursor, ZPGorvaneClientData *clientData);

    const Fields &fields() const { return _fields; }
    /// Real heights by the height index of land blocks, as the record has them.
    const LandHeights &actualLandHeights() const { return _actualLandHeights; }
    /// How many of them are no finite numbers, and which is the first; empty when all are.
    std::string faultInLandHeights() const;

    // Each call reads the section anew and gives it away: the map needs none of them, and what they
    // take is many times what the record has for them.
    std::vector<WQTimeOfDay> times() const;
    std::vector<std::string> days() const;
    std::vector<WQMonth> months() const;
    std::vector<WQWeatherType> weatherTypes() const;
    /// In the order of the terrain types that land blocks have.
    std::vector<WQLandInfo> landTypes() const;
    // The same for sections as text.
    std::string t20RefString() const;
    std::string terrainObjectsString() const;
    std::string landTypesString() const;
    std::string landTexturesString() const;

    const char *className() const override { return "WQWorldInfo"; }
    /// Everything, some ten times as long as the record.
    std::string dumpText() const override;
    /// The region record is never written back: leaves the buffer as it is.
    void writeToData(ZPData &) const {}

  private:
    /// Where in the record the sections of variable length begin.
    struct Places {
        std::uint64_t times = 0, days = 0, months = 0, weatherTypes = 0;
        std::uint64_t referenceSets = 0, terrainObjects = 0, landTypes = 0, landTextures = 0;
    };

    void readHeader(ZPDataCursor &cursor);
    void readSections(ZPDataCursor &cursor);
    ZPDataCursor cursorAt(std::uint64_t place) const;

    std::uint32_t _portalDataVersion;
    Fields _fields;
    LandHeights _actualLandHeights{};
    Places _places;
    /// All of it, since padding is counted from its beginning.
    ZPData _record;
};
