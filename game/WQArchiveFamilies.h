#pragma once

#include "archive/ZPGorvaneArchiveFamily.h"

/// The first game's current archives.
extern const ZPGorvaneArchiveFamily WQArchiveFamily;
/// The first game's archives as they were sold.
extern const ZPGorvaneArchiveFamily WQRetailArchiveFamily;
/// The second game's archives.
extern const ZPGorvaneArchiveFamily WQ2ArchiveFamily;

/// Appends the record that a node of WQArchiveFamily keeps of an entry, 24 bytes.
void WQWriteFileEntryToBuffer(const ZPGorvaneFileEntry &entry, ZPData &buffer);
