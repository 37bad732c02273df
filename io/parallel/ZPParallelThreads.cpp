// ThreadSanitizer cannot see how the installed TBB hands work from thread to thread, and takes
// every use of a result for a race. Standard threads it follows.

#include "io/ZPParallel.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace {

std::atomic<unsigned> crewSize = 4;

/// Runs the work on as many threads as there are items, the caller's among them, up to the crew's
/// size. Crews begun by a crew's own threads share one limit, lest a tree of them take every thread
/// there is.
void runCrew(std::size_t items, const std::function<void()> &work) {
    constexpr int kMostThreads = 12;
    static std::atomic<int> running = 0;
    std::exception_ptr failure;
    std::mutex failureLock;
    const auto member = [&] {
        try {
            work();
        } catch (...) {
            const std::lock_guard guard(failureLock);
            if (!failure)
                failure = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> crew;
        for (std::size_t left = std::min<std::size_t>(items, crewSize); left > 1; --left) {
            if (running.fetch_add(1) >= kMostThreads) {
                --running;
                break;
            }
            crew.emplace_back([&member] {
                member();
                --running;
            });
        }
        member();
    }
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace

void ZPParallelFor(std::size_t count, const std::function<void(std::size_t)> &body) {
    ZPParallelRanges(count, 1, [&body](std::size_t index, std::size_t) { body(index); });
}

void ZPParallelRanges(std::size_t count, std::size_t mostPerRange,
                      const std::function<void(std::size_t, std::size_t)> &body) {
    const std::size_t rangeCount = (count + mostPerRange - 1) / mostPerRange;
    std::atomic<std::size_t> next = 0;
    runCrew(rangeCount, [&] {
        try {
            for (std::size_t range = next++; range < rangeCount; range = next++)
                body(range * mostPerRange, std::min(count, (range + 1) * mostPerRange));
        } catch (...) {
            next = rangeCount; // no further ones are begun
            throw;
        }
    });
}

void ZPParallelInOrder(std::size_t count, const std::function<void(std::size_t)> &make,
                       const std::function<bool(std::size_t)> &use) {
    std::mutex lock;
    std::condition_variable isTurn;
    bool isWanted = true;
    std::size_t begun = 0, used = 0;
    runCrew(count, [&] {
        std::unique_lock guard(lock);
        while (isWanted && begun < count) {
            const std::size_t index = begun++;
            // Whoever waits for an index that will never come is told.
            const auto giveUp = [&] {
                if (!guard.owns_lock())
                    guard.lock();
                isWanted = false;
                isTurn.notify_all();
            };
            try {
                guard.unlock();
                make(index);
                guard.lock();
                isTurn.wait(guard, [&] { return used == index || !isWanted; });
                if (!isWanted)
                    return;
                isWanted = use(index);
                ++used;
                isTurn.notify_all();
            } catch (...) {
                giveUp();
                throw;
            }
        }
    });
}

void ZPWithoutOtherWork(const std::function<void()> &body) {
    body(); // threads of a crew take up no other work while they wait
}

void ZPWithThreads(unsigned count, const std::function<void()> &body) {
    const unsigned before = crewSize.exchange(count);
    try {
        body();
    } catch (...) {
        crewSize = before;
        throw;
    }
    crewSize = before;
}
