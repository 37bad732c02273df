#pragma once

#include <string_view>

/// Takes the lines of the system log, without date and process, and those that the library prints
/// to standard output; called by any thread.
using ZPLogSink = void (*)(std::string_view text);

/// Sends what is logged from now on to `sink` instead of the streams; null: to the streams again.
/// May be called before main.
void ZPSetLogSink(ZPLogSink sink);

/// Writes a line with date and process to standard error, past any sink: for a sink that passes
/// lines on.
void ZPWriteLogLine(std::string_view text);
