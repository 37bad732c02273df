#pragma once

#include "io/ZPDataCursor.h"

#include <array>
#include <vector>

/// The last section of the region record: which textures the land has and how they blend.
///
///     2 x u32
///     three lists of (u32, u32)
///     list of 11 x u32     one for each land type, its main and its detail texture among them
///     6 x u32
struct WQLandTextures {
    using Blend = std::vector<std::array<std::uint32_t, 2>>;

    explicit WQLandTextures(ZPDataCursor &cursor);

    void appendTextDataToString(std::string &text) const;

    std::array<std::uint32_t, 2> header;
    std::array<Blend, 3> blends;
    std::vector<std::array<std::uint32_t, 11>> textures;
    std::array<std::uint32_t, 6> trailer;
};
