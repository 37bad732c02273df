#pragma once

#include "map/overlay/WQMaskMaker.h"

#include <filesystem>
#include <span>
#include <string>
#include <vector>

inline constexpr char kWQLetteringLibraryName[] = "plotterra-lettering.so";

// What the library offers. It and the program are made together; a copy from another build is
// refused, whichever side is the older, before either calls into the other.
extern "C" {
/// The version of the library.
extern const char WQLetteringVersion[];
/// A maker that lives as long as the process; null where the program's version is another.
WQMaskMaker *WQLetteringMaskMaker(const char *programVersion);
}

/// Where the library may stand: beside the program, where it is installed relative to that, or
/// where the program itself says. No folder that others could write to instead, such as one to
/// build in.
[[nodiscard]] std::vector<std::filesystem::path>
WQLetteringFolders(const std::filesystem::path &program);

/// A further folder to look in, for a program that is not installed beside Plotterra's own. To be
/// called before anything is drawn.
void WQAddLetteringFolder(std::filesystem::path folder);

/// Loads the library from the first of these folders that has a sound one. Null where none has;
/// then there is a reason for each.
[[nodiscard]] WQMaskMaker *WQLoadLettering(std::span<const std::filesystem::path> folders,
                                           std::vector<std::string> &reasons);
