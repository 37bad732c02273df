#pragma once

#include "io/ZPDataCursor.h"

/// u32 day of the year, string16 aligned.
struct WQMonth {
    explicit WQMonth(ZPDataCursor &cursor)
        : startDayOfYear(cursor.readLittleInt32()),
          name(cursor.wq_readLength16StringAndAlign(true)) {}

    std::uint32_t startDayOfYear;
    std::string name;
};
