#include "io/ZPLogger.h"

#include "io/ZPExtensions.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <unistd.h>

ZPLogger ZPLogger::initWithStandardOutput() {
    ZPLogger logger;
    logger.setOutputFileHandle(stdout);
    return logger;
}

std::unique_ptr<ZPLogger> ZPLogger::initWithOutputToPath(const std::filesystem::path &path,
                                                         ZPError *error) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    std::FILE *stream = descriptor >= 0 ? fdopen(descriptor, "w") : nullptr;
    if (stream == nullptr) {
        ZPFail(error, ZPError::posix(errno));
        if (descriptor >= 0)
            close(descriptor);
        return nullptr;
    }
    auto logger = std::make_unique<ZPLogger>();
    logger->_outputFileHandle = {stream, &std::fclose};
    return logger;
}

void ZPLogger::_log(std::string_view text) {
    if (_outputFileHandle == nullptr) {
        _outputString += text;
        return;
    }
    std::FILE *stream = _outputFileHandle.get();
    std::string printable;
    if (stream == stdout && !ZPIsPlainText(text))
        text = printable = ZPPrintableText(text);
    errno = 0;
    const bool isWritten =
        std::fwrite(text.data(), 1, text.size(), stream) == text.size() && std::fflush(stream) == 0;
    if (isWritten || _writeError)
        return;
    _writeError = ZPError::posix(errno);
    ZPLog("Error: cannot write a log: %s", _writeError->description().c_str());
}

/// In one piece, so that what others write to the same stream stays outside the line.
void ZPLogger::logLine(std::string_view message) {
    std::string line;
    if (!message.empty())
        line = _linePrefix;
    line += message;
    line += _lineSuffix ? *_lineSuffix : "\n";
    _log(line);
}

void ZPLogger::log(const char *format, ...) {
    if (format == nullptr)
        return;
    va_list arguments;
    va_start(arguments, format);
    const std::string message = ZPFormatArguments(format, arguments);
    va_end(arguments);
    logLine(message);
}

void ZPLogger::logString(std::string_view prefix, std::string_view text) {
    std::string lead(prefix);
    bool isFirst = true;
    for (const std::string_view line : ZPSplitText(text, '\n')) {
        logLine(isFirst || !line.empty() ? lead.append(line) : std::string());
        lead.assign(ZPCharacterCount(prefix), ' ');
        isFirst = false;
    }
}

void ZPLogger::logBytesOfLength(std::uint64_t length, ZPDataCursor &fromCursor,
                                std::string_view prefix) {
    while (length > 0) {
        const std::uint64_t count = std::min<std::uint64_t>(length, 16);
        if (count > fromCursor.remaining())
            fromCursor.setOffset(fromCursor.data().size());
        const auto bytes = fromCursor.readSpanOfLength(count, "readByte");
        logLine(std::string(prefix) + ZPHexDumpRow(bytes));
        length -= count;
    }
}

void ZPLogger::logData(std::span<const std::byte> data, std::string_view prefix) {
    ZPDataCursor cursor(data);
    logBytesOfLength(data.size(), cursor, prefix);
}

void ZPLogger::pushIndentation(std::string indentation) {
    _indentations.push_back(std::move(indentation));
    updateLinePrefix();
}

void ZPLogger::popIndentation() {
    if (_indentations.empty())
        throw ZPGenericException("Popping an indentation where none was pushed.");
    _indentations.pop_back();
    updateLinePrefix();
}

void ZPLogger::popAllIndentation() {
    _indentations.clear();
    updateLinePrefix();
}

void ZPLogger::updateLinePrefix() {
    _linePrefix.clear();
    for (const std::string &indentation : _indentations)
        _linePrefix += indentation;
}

bool ZPLogger::flush(ZPError *error) {
    if (_writeError)
        return ZPFail(error, *_writeError);
    // Terminals and pipes cannot be synchronised, and need not.
    return _outputFileHandle == nullptr || fsync(fileno(_outputFileHandle.get())) == 0 ||
           errno == EINVAL || errno == EROFS || ZPFail(error, ZPError::posix(errno));
}
