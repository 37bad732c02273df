#pragma once

// ThreadSanitizer cannot see how the installed TBB hands work from thread to thread, and takes
// every use of a result for a race. Where it is used, the headers beside this one stand in for
// TBB's: the same few names, over standard threads, which it follows.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tbb::threads {

/// Runs the work on as many threads as there are items, at most four, and on the caller's. Crews
/// begun by a crew's own threads share its limit, lest a tree of them take every thread there is.
/// An exception is thrown again when all have ended.
inline void runCrew(std::size_t items, const std::function<void()> &work) {
    constexpr int kMostThreads = 12;
    static std::atomic<int> running = 0;
    std::exception_ptr failure;
    std::mutex failureLock;
    const auto member = [&] {
        try {
            work();
        } catch (...) {
            const std::lock_guard guard(failureLock);
            failure = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> crew;
        for (std::size_t left = std::min<std::size_t>(items, 4); left > 1; --left) {
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

} // namespace tbb::threads
