#include "io/ZPAbandonProcess.h"
#include "io/ZPParallel.h"

#include <algorithm>
#include <atomic>
#include <latch>
#include <pthread.h>
#include <stdexcept>
#include <tbb/blocked_range.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>
#include <thread>
#include <typeinfo>
#include <vector>

// TBB starts its threads when work turns up, and where the system refuses one it throws, out of
// work that is half handed out. So it is found out before its first use how many can be had, and
// TBB is held to those.

namespace {

void *waitForLatch(void *latch) {
    static_cast<std::latch *>(latch)->wait();
    return nullptr;
}

/// How many further threads, up to `wanted`, the system lets be there side by side. Bare threads: a
/// standard one frees memory, for which the C library lays 64 MiB of addresses aside.
std::size_t countOfThreads(std::size_t wanted) {
    // As TBB asks for it, which then gets the same stack from the C library.
    constexpr std::size_t kStackSize = std::size_t{4} << 20;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kStackSize);
    std::latch areAllStarted(1);
    std::vector<pthread_t> threads;
    threads.reserve(wanted);
    for (pthread_t made{}; threads.size() < wanted; threads.push_back(made))
        if (pthread_create(&made, &attributes, &waitForLatch, &areAllStarted) != 0)
            break;
    areAllStarted.count_down();
    for (const pthread_t made : threads)
        pthread_join(made, nullptr);
    return threads.size();
}

bool holdToThreadsThatCanBeHad() {
    const std::size_t wanted = std::max(std::thread::hardware_concurrency(), 1u) - 1;
    if (const std::size_t count = countOfThreads(wanted); count < wanted)
        static const tbb::global_control limit(tbb::global_control::max_allowed_parallelism,
                                               count + 1);
    return true;
}

/// Does the work, which calls TBB.
template <class Work>
void runInParallel(const Work &work) {
    [[maybe_unused]] static const bool isPrepared = holdToThreadsThatCanBeHad();
    try {
        work();
    } catch (const std::runtime_error &error) {
        // TBB's own: a thread was refused that could be had a moment before, and what other threads
        // may be at can no longer be taken apart. What this program throws is of derived classes.
        if (typeid(error) == typeid(std::runtime_error))
            ZPAbandonProcess(error.what());
        throw;
    }
}

} // namespace

void ZPParallelFor(std::size_t count, const std::function<void(std::size_t)> &body) {
    runInParallel([&] {
        tbb::parallel_for(std::size_t{0}, count, [&body](std::size_t index) { body(index); });
    });
}

void ZPParallelRanges(std::size_t count, std::size_t mostPerRange,
                      const std::function<void(std::size_t, std::size_t)> &body) {
    using Range = tbb::blocked_range<std::size_t>;
    runInParallel([&] {
        tbb::parallel_for(
            Range(0, count, mostPerRange),
            [&body](const Range &range) { body(range.begin(), range.end()); },
            tbb::simple_partitioner());
    });
}

void ZPParallelInOrder(std::size_t count, const std::function<void(std::size_t)> &make,
                       const std::function<bool(std::size_t)> &use) {
    std::atomic<bool> isWanted = true; // read by the first stage, written by the last
    std::size_t next = 0;
    const auto nextIndex = [&](tbb::flow_control &control) {
        if (next == count || !isWanted)
            control.stop();
        return next++;
    };
    const auto makeOne = [&make](std::size_t index) {
        make(index);
        return index;
    };
    const auto useOne = [&](std::size_t index) { isWanted = isWanted && use(index); };
    using tbb::filter_mode;
    runInParallel([&] {
        tbb::parallel_pipeline(
            2 * std::max(std::thread::hardware_concurrency(), 1u),
            tbb::make_filter<void, std::size_t>(filter_mode::serial_in_order, nextIndex) &
                tbb::make_filter<std::size_t, std::size_t>(filter_mode::parallel, makeOne) &
                tbb::make_filter<std::size_t, void>(filter_mode::serial_in_order, useOne));
    });
}

void ZPWithoutOtherWork(const std::function<void()> &body) {
    tbb::this_task_arena::isolate([&body] { body(); });
}

void ZPWithThreads(unsigned count, const std::function<void()> &body) {
    const tbb::global_control control(tbb::global_control::max_allowed_parallelism, count);
    tbb::task_arena arena(static_cast<int>(count));
    arena.execute([&body] { body(); });
}
