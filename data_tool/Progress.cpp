#include "data_tool/Progress.h"

#include "data_tool/Output.h"

#include <cstdio>
#include <unistd.h>

Progress::Progress(const char *label, std::size_t total)
    : _label(label), _total(total), _isShown(total > 0 && isCapableTerminal(STDERR_FILENO)) {}

Progress::~Progress() {
    if (_isShown)
        std::fputs("\r\x1b[K", stderr);
}

void Progress::show(std::size_t done) {
    using namespace std::chrono;
    constexpr auto kInterval = duration_cast<steady_clock::duration>(milliseconds(100)).count();
    const auto now = steady_clock::now().time_since_epoch().count();
    auto next = _nextShowing.load();
    // One thread at a time, and few times a second.
    if (now >= next && _nextShowing.compare_exchange_strong(next, now + kInterval))
        std::fprintf(stderr, "\r%s %zu of %zu (%zu %%)\x1b[K", _label, done, _total,
                     done * 100 / _total);
}
