#pragma once

#include "io/ZPAtomicFile.h"
#include "io/ZPError.h"
#include "sample/SampleDirectory.h"
#include "sample/SampleWorld.h"

#include <cstddef>
#include <cstdint>
#include <vector>

inline constexpr std::uint32_t SampleVersionIdentifier = 0xFFFF0001;

/// The record that every archive carries under SampleVersionIdentifier: its data version, one u32.
/// From 1394 on, weather models have nine words.
std::vector<std::byte> SampleVersionRecord(const SampleOptions &options);

/// A directory entry with the version, date and iteration that a file of the world would have.
SampleFileEntry SampleStampedEntry(const SampleOptions &options, std::uint32_t identifier);

// The three archives beside the cells, each into a file that is open and gets its name from the
// caller. An error is of the POSIX domain.
bool SampleWritePortalArchive(const SampleWorld &world, ZPAtomicFile &file,
                              ZPError *error = nullptr);
bool SampleWriteHighresArchive(const SampleWorld &world, ZPAtomicFile &file,
                               ZPError *error = nullptr);
bool SampleWriteLocalArchive(const SampleWorld &world, ZPAtomicFile &file,
                             ZPError *error = nullptr);
