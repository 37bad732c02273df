#pragma once

#include "archive/ZPGorvaneArchiveFamily.h"

/// The first game's current archives.
extern const ZPGorvaneArchiveFamily kWQArchiveFamily;
/// The first game's archives as they were sold.
extern const ZPGorvaneArchiveFamily kWQRetailArchiveFamily;
/// The second game's archives.
extern const ZPGorvaneArchiveFamily kWQ2ArchiveFamily;

/// All of them, in the order in which an archive of unknown origin is held against them.
[[nodiscard]] std::span<const ZPGorvaneArchiveFamily *const> WQArchiveFamilies();
/// Null where no family's game has this key.
[[nodiscard]] const ZPGorvaneArchiveFamily *WQArchiveFamilyWithKey(std::string_view key);

/// Appends the record that a node of kWQArchiveFamily keeps of an entry, 24 bytes.
void WQWriteFileEntryToBuffer(const ZPGorvaneFileEntry &entry, ZPData &buffer);
