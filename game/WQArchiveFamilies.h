#pragma once

#include "archive/ZPGorvaneArchiveFamily.h"

/// The first game's current archives.
extern const ZPGorvaneArchiveFamily kWQArchiveFamily;
/// The first game's archives as they were sold.
extern const ZPGorvaneArchiveFamily kWQRetailArchiveFamily;
/// The second game's archives.
extern const ZPGorvaneArchiveFamily kWQ2ArchiveFamily;

/// Appends the record that a node of kWQArchiveFamily keeps of an entry, 24 bytes.
void WQWriteFileEntryToBuffer(const ZPGorvaneFileEntry &entry, ZPData &buffer);
