#include "io/ZPLogger.h"

#include "io/ZPExtensions.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <cassert>
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
    if (_outputFileHandle != nullptr)
        std::fwrite(text.data(), 1, text.size(), _outputFileHandle.get());
    else
        _outputString += text;
}

void ZPLogger::logLine(std::string_view message) {
    if (!message.empty())
        _log(_linePrefix);
    _log(message);
    _log(_lineSuffix ? std::string_view(*_lineSuffix) : "\n");
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
        lead.assign(ZPUTF16FromString(prefix).size(), ' '); // as many as characters, not bytes
        isFirst = false;
    }
}

void ZPLogger::logBytesOfLength(std::uint64_t length, ZPDataCursor &fromCursor,
                                std::string_view prefix) {
    while (length > 0) {
        const std::uint64_t count = std::min<std::uint64_t>(length, 16);
        logLine(std::string(prefix) + ZPHexDumpRow(fromCursor.readSpanOfLength(count)));
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
    assert(!_indentations.empty());
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

void ZPLogger::flush() {
    if (_outputFileHandle == nullptr)
        return;
    std::fflush(_outputFileHandle.get());
    fsync(fileno(_outputFileHandle.get()));
}
