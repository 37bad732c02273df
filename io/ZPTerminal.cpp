#include "io/ZPTerminal.h"

#include "io/ZPText.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/// What stands right of the cursor goes.
constexpr char kClearToEnd[] = "\x1b[K";

std::size_t columnsOfStandardError() {
    constexpr std::size_t kUsual = 80;
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : kUsual;
}

/// So many characters of UTF-8 at most.
std::string_view cut(std::string_view text, std::size_t count) {
    for (std::size_t at = 0; at < text.size(); ++at)
        if ((static_cast<unsigned char>(text[at]) & 0xC0) != 0x80 && count-- == 0)
            return text.substr(0, at);
    return text;
}

} // namespace

bool ZPIsCapableTerminal(int descriptor) {
    const char *terminal = std::getenv("TERM");
    return isatty(descriptor) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

void ZPComplain(const char *program, std::string_view text) {
    std::string line;
    if (ZPIsCapableTerminal(STDERR_FILENO))
        line.append("\r").append(kClearToEnd);
    line.append(program).append(": ").append(ZPEscapedText(text)).append("\n");
    // There is nobody to tell when this fails.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

ZPProgressLine::ZPProgressLine() : _isShown(ZPIsCapableTerminal(STDERR_FILENO)) {}

ZPProgressLine::~ZPProgressLine() {
    show("");
}

void ZPProgressLine::show(std::string_view text) {
    if (!_isShown)
        return;
    // Behind a character in the last column, some terminals are on the next line.
    const std::string printable = ZPEscapedText(text);
    const std::string shown(cut(printable, columnsOfStandardError() - 1));
    std::fputs(("\r" + shown + kClearToEnd).c_str(), stderr);
}
