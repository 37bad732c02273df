#include "data_tool/Progress.h"

#include "io/ZPSystemLog.h"

void Progress::show(std::size_t done) {
    using namespace std::chrono;
    constexpr auto kInterval = duration_cast<steady_clock::duration>(milliseconds(100)).count();
    const auto now = steady_clock::now().time_since_epoch().count();
    auto next = _nextShowing.load();
    // One thread at a time, and few times a second.
    if (now >= next && _nextShowing.compare_exchange_strong(next, now + kInterval))
        _line.show(ZPFormat("%s %zu of %zu (%zu %%)", _label, done, _total, done * 100 / _total));
}
