#pragma once

#include "io/ZPAtomicFile.h"
#include "io/ZPError.h"
#include "sample/SampleWorld.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// A land block as the cell archive stores it; 252 bytes.
std::vector<std::byte> SampleLandBlockRecord(const SampleWorld &world, std::uint16_t landBlock);
/// The houses and things that stand on a land block.
std::vector<std::byte> SampleObjectBlockRecord(const SampleWorld &world, std::uint16_t landBlock);
/// One room of a dungeon, `number` counted from 0.
std::vector<std::byte> SampleDungeonCellRecord(const SampleWorld &world,
                                               const SampleDungeon &dungeon, std::uint32_t number);

/// Writes the whole cell archive into a file that is open and gets its name from the caller. An
/// error is of the POSIX domain.
bool SampleWriteCellArchive(const SampleWorld &world, ZPAtomicFile &file, ZPError *error = nullptr);
