#include "io/ZPParallelLog.h"

#include "io/ZPLogSink.h"
#include "io/ZPParallel.h"
#include "io/ZPSystemLog.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

namespace {

/// What each index logs, until those before it have ended.
class LogInOrder {
  public:
    explicit LogInOrder(std::size_t count) : _turns(count) {}

    ZPLogDiversion::Lines *linesOf(std::size_t index) { return &_turns[index].lines; }

    void end(std::size_t index) {
        const std::lock_guard guard(_lock);
        _turns[index].hasEnded = true;
        while (_next < _turns.size() && _turns[_next].hasEnded)
            releaseNext();
    }

    /// For when no more will end.
    void releaseAll() {
        while (_next < _turns.size())
            releaseNext();
    }

  private:
    struct Turn {
        ZPLogDiversion::Lines lines;
        bool hasEnded = false;
    };

    void releaseNext() {
        // Where the caller's own go, whichever thread this is.
        const ZPLogDiversion diversion(_callersLines);
        for (const std::string &line : std::exchange(_turns[_next++].lines, {}))
            ZPLog("%s", line.c_str());
    }

    ZPLogDiversion::Lines *const _callersLines = ZPLogDiversion::current();
    std::mutex _lock;
    std::vector<Turn> _turns;
    std::size_t _next = 0;
};

} // namespace

void ZPParallelForWithLog(std::size_t count, const std::function<void(std::size_t index)> &body) {
    LogInOrder log(count);
    std::atomic<std::size_t> next = 0;
    // Whichever index it is called for, it takes up the next one: left to itself, shared-out work
    // begins in several places at once, and half of the log would have to wait for the other.
    const auto takeUpNext = [&](std::size_t) {
        const std::size_t index = next++;
        {
            const ZPLogDiversion diversion(log.linesOf(index));
            body(index);
        }
        log.end(index);
    };
    try {
        ZPParallelFor(count, takeUpNext);
    } catch (...) {
        log.releaseAll();
        throw;
    }
}

void ZPParallelRangesWithLog(std::size_t count, std::size_t mostPerRange,
                             const std::function<void(std::size_t first, std::size_t end)> &body) {
    ZPParallelForWithLog((count + mostPerRange - 1) / mostPerRange, [&](std::size_t range) {
        const std::size_t first = range * mostPerRange;
        body(first, std::min(first + mostPerRange, count));
    });
}
