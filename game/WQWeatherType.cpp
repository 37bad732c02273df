#include "game/WQWeatherType.h"

#include "game/WQRecordList.h"

WQWeatherModel::WQWeatherModel(ZPDataCursor &cursor, std::uint32_t portalDataVersion)
    : v1(cursor.readLittleFloat32()), v2(cursor.readLittleFloat32()),
      v3(cursor.readLittleFloat32()), v4(cursor.readLittleFloat32()),
      v5(cursor.readLittleFloat32()), v6(cursor.readLittleFloat32()),
      modelIdentifier(cursor.readLittleInt32()),
      particleEffectIdentifier(cursor.readLittleInt32()) {
    // The lowest bit of a data version tells variants of the same format apart.
    constexpr std::uint32_t kFormatBits = 0xFFFE;
    if ((portalDataVersion & kFormatBits) >= kFirstVersionWithNinthField)
        v9 = cursor.readLittleInt32();
}

WQWeatherAnimationItem::WQWeatherAnimationItem(ZPDataCursor &cursor)
    : unknown1(cursor.readLittleInt32()), unknown2(cursor.readLittleInt32()),
      unknown3(cursor.readLittleFloat32()), unknown4(cursor.readLittleVector3()) {}

WQWeatherAnimationGroup::WQWeatherAnimationGroup(ZPDataCursor &cursor)
    : f1(cursor.readLittleFloat32()), f2(cursor.readLittleFloat32()),
      f3(cursor.readLittleFloat32()), f4(cursor.readLittleFloat32()), v1(cursor.readLittleInt32()),
      f5(cursor.readLittleFloat32()), v2(cursor.readLittleInt32()), f6(cursor.readLittleFloat32()),
      f7(cursor.readLittleFloat32()), v3(cursor.readLittleInt32()), v4(cursor.readLittleInt32()),
      weatherAnimationItems(WQReadList(cursor, [&] { return WQWeatherAnimationItem(cursor); })) {}

WQWeatherType::WQWeatherType(ZPDataCursor &cursor, std::uint32_t portalDataVersion)
    : percent(cursor.readLittleFloat32()), name(cursor.wq_readLength16StringAndAlign(true)),
      weatherModels(WQReadList(cursor, [&] { return WQWeatherModel(cursor, portalDataVersion); })),
      weatherAnimationGroups(WQReadList(cursor, [&] { return WQWeatherAnimationGroup(cursor); })) {}
