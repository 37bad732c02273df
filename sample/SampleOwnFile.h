#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Signs a text file whose lines are fields: its last line gets one more, which tells that this
/// program made it and what the rest was. The text is not empty and ends in a line end.
std::string SampleSignedText(std::string text);
/// Whether a text is signed, and as it was when that was done.
[[nodiscard]] bool SampleIsSignedText(std::string_view text);

/// Why a regular file is none that this program made, told by what it holds: an archive by how it
/// begins, a text by its signature. Null when it is one.
const char *SampleReasonNotOwn(const std::filesystem::path &path);
