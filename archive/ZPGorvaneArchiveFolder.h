#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

// Archives in a folder. Games look for them under names in a case of their own, while copies from
// disks and other systems have them in any.

/// Whether two names of files differ in the case of ASCII letters at most.
[[nodiscard]] bool ZPGorvaneIsSameFileName(std::string_view one, std::string_view other);

/// The files of a folder whose names end in `.dat`, in any case, in the order of their names. None,
/// and `fault` is set, where the folder cannot be read.
[[nodiscard]] std::vector<std::filesystem::path>
ZPGorvaneArchivesInFolder(const std::filesystem::path &folder, std::error_code &fault);

/// What to say of the folder of an archive that is not there: `, but CELL_1.DAT, PORTAL.DAT are`;
/// empty where it holds none.
[[nodiscard]] std::string ZPGorvaneArchivesInsteadOf(const std::filesystem::path &missing);
