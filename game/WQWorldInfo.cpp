#include "game/WQWorldInfo.h"

#include "archive/ZPGorvaneClientData.h"
#include "game/WQRecordList.h"
#include "io/ZPSystemLog.h"

namespace {

std::uint32_t portalDataVersion(ZPGorvaneClientData *clientData) {
    const auto *portal = clientData != nullptr ? clientData->dataFileWithName("portal") : nullptr;
    const auto *version = portal != nullptr ? portal->dataVersion() : nullptr;
    return version != nullptr ? version->version() : 0;
}

} // namespace

WQWorldInfo::WQWorldInfo(ZPDataCursor &cursor, ZPGorvaneClientData *clientData)
    : WQPortalObject(cursor, clientData) {
    readHeader(cursor);
    readCalendarAndWeather(cursor);
    readReferenceSets(cursor);
    readTerrainObjects(cursor);
    readLandTypes(cursor);
    readLandTextures(cursor);
}

void WQWorldInfo::readHeader(ZPDataCursor &cursor) {
    _fields.unknown1 = cursor.readLittleInt32();
    _fields.unknown2 = cursor.readLittleInt32();
    _fields.name = cursor.wq_readLength16StringAndAlign(false);
    _fields.width = cursor.readLittleInt32();
    _fields.height = cursor.readLittleInt32();
    _fields.squareLength = cursor.readLittleFloat32();
    _fields.landblockSquareLength = cursor.readLittleInt32();
    _fields.unknown3 = cursor.readLittleInt32();
    _fields.unknown4 = cursor.readLittleFloat32();
    _fields.unknown5 = cursor.readLittleFloat32();
    _fields.unknown6 = cursor.readLittleFloat32();
    for (float &height : _actualLandHeights)
        height = cursor.readLittleFloat32();
}

void WQWorldInfo::readCalendarAndWeather(ZPDataCursor &cursor) {
    _fields.unknown7 = cursor.readLittleFloat64();
    _fields.unknown8 = cursor.readLittleInt32();
    _fields.unknown9 = cursor.readLittleFloat32();
    _fields.daysPerYear = cursor.readLittleInt32();
    _fields.unknown10 = cursor.readLittleInt32();
    _fields.unknown11 = cursor.readLittleInt32();
    _times = WQReadList(cursor, [&] { return WQTimeOfDay(cursor); });
    _days = WQReadList(cursor, [&] { return cursor.wq_readLength16StringAndAlign(true); });
    _months = WQReadList(cursor, [&] { return WQMonth(cursor); });
    _fields.unknown12 = cursor.readLittleInt32();
    _fields.unknown13 = cursor.readLittleFloat64();
    _fields.unknown14 = cursor.readLittleFloat64();
    const std::uint32_t version = portalDataVersion(clientData());
    _weatherTypes = WQReadList(cursor, [&] { return WQWeatherType(cursor, version); });
}

void WQWorldInfo::readReferenceSets(ZPDataCursor &cursor) {
    const std::uint32_t setCount = cursor.readLittleInt32();
    for (std::size_t set = 0; set < setCount; ++set) {
        const std::uint32_t setIdentifier = cursor.readLittleInt32();
        const std::uint32_t entryCount = cursor.readLittleInt32();
        _t20RefString.append(70, '-').append("\n");
        _t20RefString += ZPFormat("%3zu: %08x, count=%u\n", set, setIdentifier, entryCount);
        for (std::size_t entry = 0; entry < entryCount; ++entry) {
            const std::uint32_t entryIdentifier = cursor.readLittleInt32();
            const ZPVector4 values = cursor.readLittleVector4();
            _t20RefString += ZPFormat("%6zu: %08x %f %f %f %f\n", entry, entryIdentifier,
                                      static_cast<double>(values.x), static_cast<double>(values.y),
                                      static_cast<double>(values.z), static_cast<double>(values.w));
        }
    }
}

void WQWorldInfo::readTerrainObjects(ZPDataCursor &cursor) {
    const std::uint32_t setCount = cursor.readLittleInt32();
    _terrainObjectsString += ZPFormat("count: %u\n", setCount);
    for (std::size_t set = 0; set < setCount; ++set) {
        _terrainObjectsString +=
            ZPFormat("%3zu (0x%02zx): %08x  ", set, set, cursor.readLittleInt32());
        const std::uint32_t identifierCount = cursor.readLittleInt32();
        for (std::uint32_t index = 0; index < identifierCount; ++index)
            _terrainObjectsString +=
                ZPFormat(index == 0 ? "%08x" : " %08x", cursor.readLittleInt32());
        _terrainObjectsString += '\n';
    }
}

void WQWorldInfo::readLandTypes(ZPDataCursor &cursor) {
    _landTypes = WQReadList(cursor, [&] { return WQLandInfo(cursor); });
    std::uint32_t place = 0;
    for (WQLandInfo &landType : _landTypes) {
        landType.setIdentifier(place++);
        landType.appendTextDataToString(_landTypesString);
    }
}

void WQWorldInfo::readLandTextures(ZPDataCursor &cursor) {
    std::string &text = _landTexturesString;
    const std::uint32_t first = cursor.readLittleInt32();
    text += ZPFormat("u1: %08x, u2: %08x\n", first, cursor.readLittleInt32());
    for (unsigned blend = 1; blend <= 3; ++blend) {
        const std::uint32_t count = cursor.readLittleInt32();
        text += ZPFormat("\nblend %u, count: %u\n", blend, count);
        for (std::size_t entry = 0; entry < count; ++entry) {
            const std::uint32_t key = cursor.readLittleInt32();
            text += ZPFormat("%3zu: %08x %08x\n", entry, key, cursor.readLittleInt32());
        }
    }

    text += "\nLand type texture stuff (main and detail)\n";
    const std::uint32_t textureCount = cursor.readLittleInt32();
    for (std::size_t texture = 0; texture < textureCount; ++texture) {
        text += ZPFormat("%3zu (%3u):", texture, cursor.readLittleInt32());
        for (unsigned index = 0; index < 10; ++index)
            text +=
                ZPFormat(index == 1 || index == 2 ? "  %08x" : " %08x", cursor.readLittleInt32());
        text += '\n';
    }
    text.append(70, '-').append("\n");
    for (unsigned index = 0; index < 6; ++index)
        text += ZPFormat("%3u: %08x\n", index, cursor.readLittleInt32());
    text += ZPFormat("offset: %08llx, remaining: %llu\n",
                     static_cast<unsigned long long>(cursor.offset()),
                     static_cast<unsigned long long>(cursor.remaining()));
}
