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

/// A text from a file, fit for a terminal: control characters (also those past ASCII), those that
/// turn the direction of writing, backslashes and bytes that are not UTF-8 become `\n`, `\t`,
/// `\u{1b}`, `\\`, `\x80`. The ASCII characters of `allowed` stay.
[[nodiscard]] std::string ZPEscapedText(std::string_view text, std::string_view allowed = {});

/// Whether the bytes are well-formed UTF-8 (no overlong form, surrogate or value past U+10FFFF).
bool ZPIsValidUTF8(std::string_view text);

/// The pieces between separators, one more than there are of these; they borrow from `text`.
std::vector<std::string_view> ZPSplitText(std::string_view text, char separator);
