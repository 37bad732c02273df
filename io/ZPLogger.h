#pragma once

#include "io/ZPDataCursor.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The structured text log: lines with a stack of indentations before them, written to standard
/// output, to a file, or collected in a string. One thread at a time. Each line is handed to the
/// system at once; that one cannot be written is said once in the system log.
class ZPLogger {
  public:
    /// Collects lines in `outputString()`.
    ZPLogger() = default;
    static ZPLogger initWithStandardOutput();
    /// Creates or truncates the file (permission bits 0666 before the process's mask) and closes it
    /// when the logger goes. Null, with an error of the POSIX domain, when it cannot be opened.
    [[nodiscard]] static std::unique_ptr<ZPLogger>
    initWithOutputToPath(const std::filesystem::path &path, ZPError *error = nullptr);

    /// Writes as it is: no prefix, no line end.
    void _log(std::string_view text);
    /// One line: prefix, message, suffix or line end. An empty message gets no prefix.
    void log(const char *format, ...) __attribute__((format(printf, 2, 3)));
    /// Logs each line of `text`, the first behind `prefix`, the others hanging under its text.
    void logString(std::string_view prefix, std::string_view text);
    /// A dump of the cursor's next bytes, 16 a line. Throws the cursor's exception when there are
    /// fewer, after the lines that are whole and with the cursor at its end.
    void logBytesOfLength(std::uint64_t length, ZPDataCursor &fromCursor, std::string_view prefix);
    void logData(std::span<const std::byte> data, std::string_view prefix);

    void pushIndentation(std::string indentation);
    /// Throws ZPGenericException when the stack is empty.
    void popIndentation();
    void popAllIndentation();
    const std::vector<std::string> &indentations() const { return _indentations; }

    /// Asks the system to put what was written on the disk; nothing for a string logger. False,
    /// with an error of the POSIX domain, when that fails or a line could not be written before.
    [[nodiscard]] bool flush(ZPError *error = nullptr);

    const std::string &outputString() const { return _outputString; }
    void setOutputString(std::string text) { _outputString = std::move(text); }
    /// Null for a string logger.
    std::FILE *outputFileHandle() const { return _outputFileHandle.get(); }
    /// The stream stays the caller's. What could not be written to an earlier one is forgotten.
    void setOutputFileHandle(std::FILE *stream) {
        _outputFileHandle = {stream, &leaveOpen};
        _writeError.reset();
    }
    const std::string &linePrefix() const { return _linePrefix; }
    void setLinePrefix(std::string prefix) { _linePrefix = std::move(prefix); }
    const std::optional<std::string> &lineSuffix() const { return _lineSuffix; }
    void setLineSuffix(std::optional<std::string> suffix) { _lineSuffix = std::move(suffix); }

  private:
    static int leaveOpen(std::FILE *) { return 0; }
    void logLine(std::string_view message);
    void updateLinePrefix();

    std::unique_ptr<std::FILE, int (*)(std::FILE *)> _outputFileHandle{nullptr, &leaveOpen};
    std::string _outputString;
    std::vector<std::string> _indentations;
    std::string _linePrefix;
    std::optional<std::string> _lineSuffix;
    /// The cause of the first failure on this stream.
    std::optional<ZPError> _writeError;
};
