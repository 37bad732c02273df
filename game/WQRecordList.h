#pragma once

#include "io/ZPDataCursor.h"

#include <vector>

// Lists in records: a u32 count and as many elements, each read with `readElement`. No memory is
// set aside by the count alone, and the elements' reads end at the end of the data.

/// Memory grows with the elements that are really there.
template <class ReadElement>
auto WQReadList(ZPDataCursor &cursor, ReadElement readElement) {
    std::vector<decltype(readElement())> list;
    for (std::uint32_t left = cursor.readLittleInt32(); left > 0; --left)
        list.push_back(readElement());
    return list;
}

/// Goes past a list and keeps one element at a time; the place where the list begins.
template <class ReadElement>
std::uint64_t WQSkipList(ZPDataCursor &cursor, ReadElement readElement) {
    const std::uint64_t place = cursor.offset();
    for (std::uint32_t left = cursor.readLittleInt32(); left > 0; --left)
        readElement();
    return place;
}
