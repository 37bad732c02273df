#pragma once

#include "archive/ZPGorvaneVersion.h"

/// The version record of the first game's archives, kWQVersionIdentifier in each:
///
///     0   u32   data version, little endian
class WQVersion : public ZPGorvaneVersion {
  public:
    WQVersion(ZPDataCursor &cursor, ZPGorvaneClientData *clientData)
        : ZPGorvaneVersion(cursor, clientData) {
        setVersion(cursor.readLittleInt32());
    }

    const char *className() const override { return "WQVersion"; }
};
