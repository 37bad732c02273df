#pragma once

#include "io/ZPData.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// -- byte buffers

/// Two lower-case hexadecimal digits a byte, no separators.
std::string ZPHexString(std::span<const std::byte> data);

// Append the value's bytes.
void ZPAppendLittleInt16(ZPData &data, std::uint16_t value);
void ZPAppendLittleInt32(ZPData &data, std::uint32_t value);
void ZPAppendBigInt16(ZPData &data, std::uint16_t value);
void ZPAppendBigInt32(ZPData &data, std::uint32_t value);
/// Exchanges the two 4-bit halves of every byte.
void ZPSwapNibbles(std::span<std::byte> data);
/// Appends zero bytes up to a multiple of four, and logs what it did.
void ZPAlignToFourByteBoundary(ZPData &data);

// -- text

// `length` blanks.
std::string ZPSpacesOfLength(std::size_t length);
void ZPAppendSpacesOfLength(std::string &text, std::size_t length);
/// Appends two blanks a level.
void ZPIndentToLevel(std::string &text, std::size_t level);
/// Parses the hexadecimal number, with or without 0x, that `text` begins with after blanks. False,
/// and `value` untouched, where there is none; a number too large gives the largest value.
[[nodiscard]] bool ZPScanHexValue(std::string_view text, std::uint32_t &value);
/// Four characters, the most significant byte first.
std::string ZPFourCCStringForValue(std::uint32_t value);
/// Eight hexadecimal digits with every 0 shown as a dot.
std::string ZPStringForFlags(std::uint32_t flags);
/// Days, and from 365 of them on years and days, with the seconds in brackets:
/// ` 1.50 days (129600.000000 seconds)`.
std::string ZPTimeFromSeconds(double seconds);
std::string ZPTimeFromMilliseconds(std::uint32_t milliseconds);

/// One line of a dump without its line end: up to 16 bytes as hexadecimal, filled with blanks to
/// the width of a full row, and as characters between bars; what is not printable shows as a dot.
std::string ZPHexDumpRow(std::span<const std::byte> bytes);
/// Appends the dump of `data`, 16 bytes a line, each line with `prefix` before it.
void ZPAppendHexDumpOfData(std::string &text, std::span<const std::byte> data,
                           std::string_view prefix);
