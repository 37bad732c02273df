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
