#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

/// What a fuzz target defines: it must take any bytes without a crash, a hang or a false claim.
/// libFuzzer calls it with bytes of its own making, the replay program with those of the corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);

/// A folder for the files that a target hands to readers which want paths. One a process, in memory
/// where the system has such a place, removed at exit.
const std::filesystem::path &FuzzFolder();
/// Replaces the contents of a file of that folder.
void FuzzWriteFile(const std::string &name, std::span<const std::byte> bytes);

/// Ends the process where a claim does not hold, which counts as a crash.
void FuzzExpect(bool claim);
