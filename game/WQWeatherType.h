#pragma once

#include "io/ZPDataCursor.h"
#include "io/ZPVector.h"

#include <optional>

/// 6 x f32, u32 model, u32 particle effect and, from a certain data version on, u32 `v9`.
struct WQWeatherModel {
    static constexpr std::uint32_t kFirstVersionWithNinthField = 1394;

    /// The version is that of the portal archive that the record comes from, 0 where it has none.
    WQWeatherModel(ZPDataCursor &cursor, std::uint32_t portalDataVersion);

    float v1, v2, v3, v4, v5, v6;
    std::uint32_t modelIdentifier;
    std::uint32_t particleEffectIdentifier;
    std::optional<std::uint32_t> v9;
};

/// 2 x u32, f32, 3 x f32.
struct WQWeatherAnimationItem {
    explicit WQWeatherAnimationItem(ZPDataCursor &cursor);

    std::uint32_t unknown1, unknown2;
    float unknown3;
    ZPVector3 unknown4;
};

/// The numbers in the order of the fields, then u32 count and the items.
struct WQWeatherAnimationGroup {
    explicit WQWeatherAnimationGroup(ZPDataCursor &cursor);

    float f1, f2, f3, f4;
    std::uint32_t v1;
    float f5;
    std::uint32_t v2;
    float f6, f7;
    std::uint32_t v3, v4;
    std::vector<WQWeatherAnimationItem> weatherAnimationItems;
};

/// f32, string16 aligned, then two lists with a u32 count each.
struct WQWeatherType {
    WQWeatherType(ZPDataCursor &cursor, std::uint32_t portalDataVersion);

    float percent;
    std::string name;
    std::vector<WQWeatherModel> weatherModels;
    std::vector<WQWeatherAnimationGroup> weatherAnimationGroups;
};
