#pragma once

#include "data_tool/GameTable.h"

#include <filesystem>

/// Finds the family of an archive by what stands where the headers of each family have their magic
/// numbers and, where two families share those, by which of them makes sense of the rest. Throws
/// CommandFailure, telling what was found there, when the file fits none or cannot be read.
[[nodiscard]] const GameRow &familyOfArchive(const std::filesystem::path &path);

/// How a file fares as an archive of one family; empty when it fits.
[[nodiscard]] std::string reasonNotOfFamily(std::span<const std::byte> file, const GameRow &game);
