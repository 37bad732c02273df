#pragma once

#include "io/ZPData.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Windows-1252 bytes as UTF-8. The five bytes that the code page leaves open map to the C1 control
/// of the same number, so that every byte survives a round trip.
std::string ZPStringFromWindows1252(std::span<const std::byte> bytes);
/// UTF-8 as Windows-1252; a character that the code page lacks becomes '?'.
ZPData ZPWindows1252FromString(std::string_view text);

/// An unpaired surrogate becomes U+FFFD.
std::string ZPStringFromUTF16(std::u16string_view units);
/// What is not UTF-8 becomes U+FFFD, byte by byte.
std::u16string ZPUTF16FromString(std::string_view text);

// What must not reach a terminal raw is said here once, for logs, listings, dumps, JSON, help and
// complaints of all programs: control characters (also those past ASCII), characters that turn the
// direction of writing or end a line, and bytes that are not UTF-8.

/// A text from a file, in one line: what must not reach a terminal, line ends, tabs and backslashes
/// become `\n`, `\t`, `\\`, `\u{1b}`, `\x80`. The ASCII characters of `allowed` stay.
[[nodiscard]] std::string ZPEscapedText(std::string_view text, std::string_view allowed = {});
/// Lines of a program's own, which may quote such texts: line ends, tabs and backslashes stay,
/// since what was escaped before has them.
[[nodiscard]] std::string ZPPrintableText(std::string_view text);
/// Whether the same text would come back; costs next to nothing.
[[nodiscard]] bool ZPIsPlainText(std::string_view text);
/// JSON of the same meaning, with `\u202e` and the like in its strings. Bytes that are not UTF-8,
/// which no JSON may have, become U+FFFD.
[[nodiscard]] std::string ZPPrintableJSON(std::string_view json);

/// Whether the bytes are well-formed UTF-8 (no overlong form, surrogate or value past U+10FFFF).
bool ZPIsValidUTF8(std::string_view text);

// Characters, however many bytes each takes; a byte that is not UTF-8 counts as one.
std::size_t ZPCharacterCount(std::string_view text);
/// The first `count` of them, or all there are; borrows from `text`.
std::string_view ZPFirstCharacters(std::string_view text, std::size_t count);

/// The pieces between separators, one more than there are of these; they borrow from `text`.
std::vector<std::string_view> ZPSplitText(std::string_view text, char separator);
