#pragma once

#include "archive/ZPGorvaneVersion.h"

// Identifiers of files, 32 bits. In the portal, high-resolution and local archives:
//
//     31      24 23                      0
//     | type    | number                 |
//
// and in the cell archive, where the upper half is the number of a land block:
//
//     31      24 23      16 15           0
//     | column  | row      | cell        |     columns from the west, rows from the south
//
// Cell 0xFFFF is the land block itself, 0xFFFE its object block, every other one a dungeon cell.
// 0xFFFF0001 is the version record of every archive.

// Types.
inline constexpr std::uint8_t kWQPaletteType = 0x04;
inline constexpr std::uint8_t kWQImageType = 0x06;
inline constexpr std::uint8_t kWQSoundType = 0x0A;
inline constexpr std::uint8_t kWQPaletteGroupType = 0x0F;
inline constexpr std::uint8_t kWQSoundTableType = 0x20;

// Records of which there is one.
inline constexpr std::uint32_t kWQVersionIdentifier = ZPGorvaneVersion::kIdentifier;
inline constexpr std::uint32_t kWQSkillTableIdentifier = 0x0E000004;
inline constexpr std::uint32_t kWQSpellTableIdentifier = 0x0E00000E;
inline constexpr std::uint32_t kWQComponentTableIdentifier = 0x0E00000F;
inline constexpr std::uint32_t kWQContractTableIdentifier = 0x0E00001D;
inline constexpr std::uint32_t kWQWorldInfoIdentifier = 0x13000000;
inline constexpr std::uint32_t kWQGenderTableIdentifier = 0x2200000A;
inline constexpr std::uint32_t kWQRaceTableIdentifier = 0x2200000B;
inline constexpr std::uint32_t kWQSpeciesTableIdentifier = 0x2200000E;
inline constexpr std::uint32_t kWQTitleTableIdentifier = 0x22000041;
inline constexpr std::uint32_t kWQMaterialTableIdentifier = 0x27000000;

/// The land-block number that stands for no block: the archive's own records have it.
inline constexpr std::uint16_t kWQArchiveRecordsNumber = 0xFFFF;

constexpr std::uint8_t WQTypeOfIdentifier(std::uint32_t identifier) {
    return static_cast<std::uint8_t>(identifier >> 24);
}

/// How many low bits of a cell archive's identifier tell the files of one land block apart.
inline constexpr unsigned kWQCellBits = 16;

constexpr std::uint16_t WQLandBlockNumberOfIdentifier(std::uint32_t identifier) {
    return static_cast<std::uint16_t>(identifier >> kWQCellBits);
}

constexpr std::uint8_t WQColumnOfLandBlock(std::uint16_t number) {
    return static_cast<std::uint8_t>(number >> 8);
}

constexpr std::uint8_t WQRowOfLandBlock(std::uint16_t number) {
    return static_cast<std::uint8_t>(number & 0xFF);
}

constexpr std::uint16_t WQCellOfIdentifier(std::uint32_t identifier) {
    return static_cast<std::uint16_t>(identifier);
}

constexpr std::uint32_t WQIdentifierOfCell(std::uint32_t landBlockNumber, std::uint16_t cell) {
    return landBlockNumber << kWQCellBits | cell;
}

/// What a file of the cell archive is.
enum class WQCellFileKind { landBlock, objectBlock, dungeonBlock, version };

constexpr WQCellFileKind WQKindOfCellFile(std::uint32_t identifier) {
    switch (WQCellOfIdentifier(identifier)) {
    case 0xFFFF: return WQCellFileKind::landBlock;
    case 0xFFFE: return WQCellFileKind::objectBlock;
    default:
        return identifier == kWQVersionIdentifier ? WQCellFileKind::version
                                                  : WQCellFileKind::dungeonBlock;
    }
}
