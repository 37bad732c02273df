#pragma once

#include "io/ZPDataCursor.h"
#include "io/ZPVector.h"

#include <vector>

/// u32 identifier, then a list of (u32 identifier, 4 x f32). What it refers to is not known.
struct WQReferenceSet {
    struct Reference {
        std::uint32_t identifier;
        ZPVector4 values;
    };

    explicit WQReferenceSet(ZPDataCursor &cursor);

    /// `place` is that of the set in the record's list, from 0.
    void appendTextDataToString(std::string &text, std::size_t place) const;

    std::uint32_t identifier;
    std::vector<Reference> references;
};
