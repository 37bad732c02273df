#pragma once

#include <string>
#include <string_view>

/// Text of a file as it may be shown on a terminal: control characters (also those past ASCII),
/// those that turn the direction of writing, and bytes that are not UTF-8 become `\n`, `\t`,
/// `\u{1b}`, `\x80`; a backslash becomes two.
std::string ZPEscapedLine(std::string_view text);
