#pragma once

#include "io/ZPDataCursor.h"

#include <vector>

/// u32, then a list of the u32 identifiers of scenery.
struct WQTerrainObjectSet {
    explicit WQTerrainObjectSet(ZPDataCursor &cursor);

    /// `place` is that of the set in the record's list, from 0.
    void appendTextDataToString(std::string &text, std::size_t place) const;

    std::uint32_t value;
    std::vector<std::uint32_t> identifiers;
};
