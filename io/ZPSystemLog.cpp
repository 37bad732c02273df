#include "io/ZPSystemLog.h"

#include "io/ZPLogSink.h"
#include "io/ZPText.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

// Constant from the start, since classes log while they register before main.
constinit std::atomic<ZPLogSink> logSink = nullptr;

/// Null where this thread's lines go on.
constinit thread_local ZPLogDiversion::Lines *divertedLines = nullptr;

enum class KeptLines { none, areTaken, areThere };
constinit std::atomic<KeptLines> keptState = KeptLines::none;

std::vector<std::string> &keptLines() {
    static std::vector<std::string> lines;
    return lines;
}

void passOn(const std::string &text) {
    if (const ZPLogSink sink = logSink)
        sink(text);
    else
        ZPWriteLogLine(text);
}

std::string timeAndProcess() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
    return ZPFormat("%s.%03ld %s[%d:%d] ", date, now.tv_nsec / 1'000'000,
                    ZPEscapedText(program_invocation_short_name).c_str(), getpid(), gettid());
}

/// A whole line of text that may come from a file, which must not fill the disk.
std::string printable(std::string_view text) {
    constexpr std::size_t kLongestLine = 1 << 16;
    if (text.size() <= kLongestLine)
        return ZPPrintableText(text) + "\n";
    return ZPPrintableText(text.substr(0, kLongestLine)) +
           ZPFormat("... and %zu bytes more\n", text.size() - kLongestLine);
}

} // namespace

std::string ZPFormatArguments(const char *format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

std::string ZPFormat(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::string text = ZPFormatArguments(format, arguments);
    va_end(arguments);
    return text;
}

void ZPSetLogSink(ZPLogSink sink) {
    logSink = sink;
}

void ZPLog(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::string text = ZPFormatArguments(format, arguments);
    va_end(arguments);
    if (divertedLines != nullptr)
        return divertedLines->push_back(std::move(text));
    if (keptState == KeptLines::areTaken)
        return keptLines().push_back(std::move(text));
    if (keptState.exchange(KeptLines::none) == KeptLines::areThere)
        for (const std::string &line : std::exchange(keptLines(), {}))
            passOn(line);
    passOn(text);
}

ZPLogHold::ZPLogHold() {
    keptState = KeptLines::areTaken;
}

ZPLogHold::~ZPLogHold() {
    keptState = KeptLines::areThere;
}

ZPLogDiversion::ZPLogDiversion(Lines *lines) : _outer(std::exchange(divertedLines, lines)) {}

ZPLogDiversion::~ZPLogDiversion() {
    divertedLines = _outer;
}

ZPLogDiversion::Lines *ZPLogDiversion::current() {
    return divertedLines;
}

void ZPWriteLogLine(std::string_view text) {
    const std::string line = timeAndProcess() + printable(text);

    // A log that cannot be written has nowhere to report that.
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t count = write(STDERR_FILENO, rest.data(), rest.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

void ZPPrintLine(const char *format, va_list arguments) {
    if (const ZPLogSink sink = logSink) {
        sink(ZPFormatArguments(format, arguments));
        return;
    }
    std::puts(ZPPrintableText(ZPFormatArguments(format, arguments)).c_str());
    std::fflush(stdout);
}
