#pragma once

#include "io/ZPDataCursor.h"

/// f32 start, u32 of which exactly 1 means night, string16 aligned.
struct WQTimeOfDay {
    explicit WQTimeOfDay(ZPDataCursor &cursor)
        : start(cursor.readLittleFloat32()), isNight(cursor.readLittleInt32() == 1),
          name(cursor.wq_readLength16StringAndAlign(true)) {}

    float start;
    bool isNight;
    std::string name;
};

/// u32 day of the year, string16 aligned.
struct WQMonth {
    explicit WQMonth(ZPDataCursor &cursor)
        : startDayOfYear(cursor.readLittleInt32()),
          name(cursor.wq_readLength16StringAndAlign(true)) {}

    std::uint32_t startDayOfYear;
    std::string name;
};
