#pragma once

#include "archive/ZPGorvaneStoredObject.h"

/// What an identifier tells about its record: the class's name and how to build one.
struct WQRecordClass {
    const char *name;
    /// False where the record has to be told its identifier.
    bool isIdentifierInData;
    /// Null, logged, when the bytes do not make a record.
    std::unique_ptr<ZPGorvaneStoredObject> (*newWithData)(const WQRecordClass &recordClass,
                                                          std::span<const std::byte> data,
                                                          ZPGorvaneClientData *clientData);
};

/// By the type byte (identifier bits 24 to 31) and, for some types, the whole identifier. Null for
/// an identifier that belongs to no class.
const WQRecordClass *WQRecordClassForPortalIdentifier(std::uint32_t identifier);

/// By the low half of the identifier; every one belongs to a class.
const WQRecordClass &WQRecordClassForCellIdentifier(std::uint32_t identifier);
