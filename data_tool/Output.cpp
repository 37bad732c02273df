#include "data_tool/Output.h"

#include "data_tool/Failure.h"
#include "io/ZPOutputGate.h"
#include "io/ZPSystemLog.h"
#include "io/ZPTerminal.h"
#include "io/ZPText.h"

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <unistd.h>

void say(const std::string &text) {
    ZPComplain("plotterra-data", text);
}

void Output::format(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write(ZPFormatArguments(format, arguments));
    va_end(arguments);
}

void Output::writeRaw(std::string_view bytes) {
    makePrintable();
    _buffer += bytes;
    _printableSize = _buffer.size();
    write({});
}

void Output::makePrintable() {
    const std::string_view text = std::string_view(_buffer).substr(_printableSize);
    if (!ZPIsPlainText(text))
        _buffer.replace(_printableSize, text.size(), ZPPrintableText(text));
    _printableSize = _buffer.size();
}

void Output::flush() {
    makePrintable();
    if (ZPError error; !_isChecked && !ZPMayWrite("/dev/stdout", &error))
        throw CommandFailure("standard output " + error.failureReason());
    _isChecked = true;
    std::string_view rest = _buffer;
    while (!rest.empty() && _isRead) {
        const ssize_t count = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (count >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EPIPE) {
            _isRead = false;
        } else if (errno != EINTR) {
            const ZPError error = ZPError::posix(errno);
            throw CommandFailure("cannot write to standard output: " + error.failureReason());
        }
    }
    _buffer.clear();
    _printableSize = 0;
}

bool usesColor() {
    const char *noColor = std::getenv("NO_COLOR");
    return ZPIsCapableTerminal(STDOUT_FILENO) && (noColor == nullptr || *noColor == '\0');
}

namespace {

template <std::size_t Digits>
void appendDigits(std::string &text, unsigned number) {
    char digits[Digits];
    for (std::size_t place = Digits; place-- > 0; number /= 10)
        digits[place] = static_cast<char>('0' + number % 10);
    text.append(digits, Digits);
}

} // namespace

void appendDate(std::string &text, std::uint32_t seconds) {
    using namespace std::chrono;
    const sys_seconds time{std::chrono::seconds(seconds)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const auto ofDay = static_cast<unsigned>((time - day).count());
    appendDigits<4>(text, static_cast<unsigned>(static_cast<int>(date.year())));
    text += '-';
    appendDigits<2>(text, static_cast<unsigned>(date.month()));
    text += '-';
    appendDigits<2>(text, static_cast<unsigned>(date.day()));
    text += 'T';
    appendDigits<2>(text, ofDay / 3600);
    text += ':';
    appendDigits<2>(text, ofDay / 60 % 60);
    text += ':';
    appendDigits<2>(text, ofDay % 60);
    text += 'Z';
}

void appendIdentifier(std::string &text, std::uint32_t identifier) {
    char digits[10] = {'0', 'x'};
    for (int place = 9; place > 1; --place, identifier >>= 4)
        digits[place] = "0123456789abcdef"[identifier & 0xF];
    text.append(digits, sizeof digits);
}

void appendNumber(std::string &text, std::uint64_t number) {
    char digits[20];
    text.append(digits, std::to_chars(digits, std::end(digits), number).ptr);
}

void appendPadded(std::string &text, std::string_view part, std::size_t width) {
    if (part.size() < width)
        text.append(width - part.size(), ' ');
    text += part;
}
