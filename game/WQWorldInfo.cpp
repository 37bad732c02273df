#include "game/WQWorldInfo.h"

#include "archive/ZPGorvaneClientData.h"
#include "game/WQLandTextures.h"
#include "game/WQRecordList.h"
#include "game/WQReferenceSet.h"
#include "game/WQTerrainObjectSet.h"
#include "io/ZPSystemLog.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

std::uint32_t portalDataVersion(ZPGorvaneClientData *clientData) {
    const auto *portal = clientData != nullptr ? clientData->dataFileWithName("portal") : nullptr;
    const auto *version = portal != nullptr ? portal->dataVersion() : nullptr;
    return version != nullptr ? version->version() : 0;
}

std::string readDay(ZPDataCursor &cursor) {
    return cursor.wq_readLength16StringAndAlign(true);
}

} // namespace

WQWorldInfo::WQWorldInfo(ZPDataCursor &cursor, ZPGorvaneClientData *clientData)
    : WQPortalObject(cursor, clientData), _portalDataVersion(portalDataVersion(clientData)) {
    readHeader(cursor);
    readSections(cursor);
    _record.assign(cursor.data().begin(), cursor.data().end());
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

void WQWorldInfo::readSections(ZPDataCursor &cursor) {
    _fields.unknown7 = cursor.readLittleFloat64();
    _fields.unknown8 = cursor.readLittleInt32();
    _fields.unknown9 = cursor.readLittleFloat32();
    _fields.daysPerYear = cursor.readLittleInt32();
    _fields.unknown10 = cursor.readLittleInt32();
    _fields.unknown11 = cursor.readLittleInt32();
    _places.times = WQSkipList(cursor, [&] { WQTimeOfDay{cursor}; });
    _places.days = WQSkipList(cursor, [&] { readDay(cursor); });
    _places.months = WQSkipList(cursor, [&] { WQMonth{cursor}; });
    _fields.unknown12 = cursor.readLittleInt32();
    _fields.unknown13 = cursor.readLittleFloat64();
    _fields.unknown14 = cursor.readLittleFloat64();
    _places.weatherTypes = WQSkipList(cursor, [&] { WQWeatherType{cursor, _portalDataVersion}; });
    _places.referenceSets = WQSkipList(cursor, [&] { WQReferenceSet{cursor}; });
    _places.terrainObjects = WQSkipList(cursor, [&] { WQTerrainObjectSet{cursor}; });
    _places.landTypes = WQSkipList(cursor, [&] { WQLandInfo{cursor}; });
    _places.landTextures = cursor.offset();
    WQLandTextures{cursor};
}

// -- sections, read again from the kept record

ZPDataCursor WQWorldInfo::cursorAt(std::uint64_t place) const {
    ZPDataCursor cursor(_record);
    cursor.setOffset(place);
    return cursor;
}

std::string WQWorldInfo::faultInLandHeights() const {
    const auto isFinite = [](float height) { return std::isfinite(height); };
    const auto first = std::ranges::find_if_not(_actualLandHeights, isFinite);
    if (first == _actualLandHeights.end())
        return {};
    const auto count = std::count_if(first, _actualLandHeights.end(), std::not_fn(isFinite));
    return ZPFormat(
        "%td of the %zu land heights in the region record (%08x) are no finite numbers, "
        "first that of index %td",
        count, _actualLandHeights.size(), identifier(), first - _actualLandHeights.begin());
}

std::vector<WQTimeOfDay> WQWorldInfo::times() const {
    ZPDataCursor cursor = cursorAt(_places.times);
    return WQReadList(cursor, [&] { return WQTimeOfDay(cursor); });
}

std::vector<std::string> WQWorldInfo::days() const {
    ZPDataCursor cursor = cursorAt(_places.days);
    return WQReadList(cursor, [&] { return readDay(cursor); });
}

std::vector<WQMonth> WQWorldInfo::months() const {
    ZPDataCursor cursor = cursorAt(_places.months);
    return WQReadList(cursor, [&] { return WQMonth(cursor); });
}

std::vector<WQWeatherType> WQWorldInfo::weatherTypes() const {
    ZPDataCursor cursor = cursorAt(_places.weatherTypes);
    return WQReadList(cursor, [&] { return WQWeatherType(cursor, _portalDataVersion); });
}

std::vector<WQLandInfo> WQWorldInfo::landTypes() const {
    ZPDataCursor cursor = cursorAt(_places.landTypes);
    std::uint32_t place = 0;
    return WQReadList(cursor, [&] {
        WQLandInfo landType(cursor);
        landType.setIdentifier(place++);
        return landType;
    });
}

std::string WQWorldInfo::t20RefString() const {
    std::string text;
    ZPDataCursor cursor = cursorAt(_places.referenceSets);
    std::size_t place = 0;
    WQSkipList(cursor, [&] { WQReferenceSet(cursor).appendTextDataToString(text, place++); });
    return text;
}

std::string WQWorldInfo::terrainObjectsString() const {
    ZPDataCursor cursor = cursorAt(_places.terrainObjects);
    std::string text = ZPFormat("count: %u\n", cursorAt(_places.terrainObjects).readLittleInt32());
    std::size_t place = 0;
    WQSkipList(cursor, [&] { WQTerrainObjectSet(cursor).appendTextDataToString(text, place++); });
    return text;
}

std::string WQWorldInfo::landTypesString() const {
    std::string text;
    ZPDataCursor cursor = cursorAt(_places.landTypes);
    std::uint32_t place = 0;
    WQSkipList(cursor, [&] {
        WQLandInfo landType(cursor);
        landType.setIdentifier(place++);
        landType.appendTextDataToString(text);
    });
    return text;
}

std::string WQWorldInfo::landTexturesString() const {
    std::string text;
    ZPDataCursor cursor = cursorAt(_places.landTextures);
    WQLandTextures(cursor).appendTextDataToString(text);
    text += ZPFormat("offset: %08llx, remaining: %llu\n",
                     static_cast<unsigned long long>(cursor.offset()),
                     static_cast<unsigned long long>(cursor.remaining()));
    return text;
}
