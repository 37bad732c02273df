#pragma once

#include <filesystem>

/// The folder that a path's last name is in; "." for a name alone.
std::filesystem::path ZPFolderOfPath(const std::filesystem::path &path);

/// Whether a path leads to an open file of a process, as /dev/stdout does when it is followed.
bool ZPIsInProcessFolder(const std::filesystem::path &path);

/// The path that the links of a path's last name lead to, whether something is there or not. A link
/// to an open file of a process leads to no name that could be replaced, and stays.
std::filesystem::path ZPFollowLinks(std::filesystem::path path);
