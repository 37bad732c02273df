#pragma once

#include "io/ZPDataCursor.h"

/// Reads a u32 count and as many elements, each with `readElement`. No memory is set aside by the
/// count alone: it grows with the elements, whose reads end at the end of the data.
template <class ReadElement>
auto WQReadList(ZPDataCursor &cursor, ReadElement readElement) {
    std::vector<decltype(readElement())> list;
    for (std::uint32_t left = cursor.readLittleInt32(); left > 0; --left)
        list.push_back(readElement());
    return list;
}
