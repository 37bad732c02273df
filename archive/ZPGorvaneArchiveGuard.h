#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

/// Whether a file that begins with these bytes may be an archive of any version, a damaged one
/// included: one of the numbers of its header is enough.
[[nodiscard]] bool ZPGorvaneBeginsArchive(std::span<const std::byte> start);

/// Whether a path leads to a regular file that begins so. False for one that cannot be read.
[[nodiscard]] bool ZPGorvaneIsArchive(const std::filesystem::path &path);

/// Why a regular file must not be replaced, if it begins as an archive does or cannot be looked
/// into; else null. Programs hand it to ZPSetOutputGuard.
const char *ZPGorvaneReasonToKeep(const std::filesystem::path &path);
