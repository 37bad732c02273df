#pragma once

#include <cstdarg>
#include <string>

/// Writes one line to the standard error stream, in a single `write` and so whole even when several
/// threads log: `2026-01-31 12:34:56.789 program[pid:thread] text`. The time is local time. Control
/// characters but line ends and tabs are escaped, and a text is cut after 65536 bytes.
void ZPLog(const char *format, ...) __attribute__((format(printf, 1, 2)));

/// The result of a printf-style format.
std::string ZPFormat(const char *format, ...) __attribute__((format(printf, 1, 2)));

std::string ZPFormatArguments(const char *format, va_list arguments)
    __attribute__((format(printf, 1, 0)));

/// Writes a line to standard output, escaped as the log's are, and flushes it.
void ZPPrintLine(const char *format, va_list arguments) __attribute__((format(printf, 1, 0)));

/// Text of an object that may be absent: itself, or `(null)`.
inline const char *ZPTextOrNull(const std::string *text) {
    return text != nullptr ? text->c_str() : "(null)";
}
