#pragma once

#include "game/WQIdentifier.h"

#include <optional>
#include <span>

/// A class of records: which identifiers it reads, and how. Every class is a row of the tables in
/// WQRecordClass.cpp and nowhere else; one that nobody wrote a C++ class for keeps its bytes, see
/// WQUndecodedObject.
struct WQRecordClass {
    using Maker = std::unique_ptr<ZPGorvaneStoredObject> (*)(const WQRecordClass &recordClass,
                                                             std::span<const std::byte> data,
                                                             ZPGorvaneClientData *clientData);

    const char *name;
    /// Identifier bits 24 to 31. Means nothing for the classes of the cell archive, which go by
    /// WQKindOfCellFile.
    std::uint8_t type;
    /// The one identifier of the type that the class reads; without a value it reads them all.
    std::optional<std::uint32_t> onlyIdentifier;
    /// Whether a C++ class reads its fields.
    bool isDecoded;
    /// False where the record has to be told its identifier.
    bool isIdentifierInData;
    Maker maker;

    /// Null, logged, when the bytes do not make a record; bytes left over are only warned of.
    [[nodiscard]] std::unique_ptr<ZPGorvaneStoredObject>
    newRecord(std::span<const std::byte> data, ZPGorvaneClientData *clientData) const {
        return maker(*this, data, clientData);
    }
    /// For the classes of the portal, high-resolution and local archives.
    constexpr bool readsPortalIdentifier(std::uint32_t identifier) const {
        return onlyIdentifier ? *onlyIdentifier == identifier
                              : type == WQTypeOfIdentifier(identifier);
    }
};

/// The classes of the portal, high-resolution and local archives, by type.
std::span<const WQRecordClass> WQPortalRecordClasses();
/// The classes of the cell archive, in the order of WQCellFileKind.
std::span<const WQRecordClass> WQCellRecordClasses();

/// Null for an identifier that belongs to no class.
[[nodiscard]] const WQRecordClass *WQRecordClassForPortalIdentifier(std::uint32_t identifier);
/// Every identifier of the cell archive belongs to a class.
const WQRecordClass &WQRecordClassForCellIdentifier(std::uint32_t identifier);
