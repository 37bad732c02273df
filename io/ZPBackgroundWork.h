#pragma once

#include <functional>
#include <future>
#include <system_error>

/// Does the work on a thread of its own, or at once where none can be made. Destroying the result
/// waits for the end.
[[nodiscard]] inline std::future<void> ZPDoInBackground(const std::function<void()> &work) {
    try {
        return std::async(std::launch::async, work);
    } catch (const std::system_error &) {
        work();
        return {};
    }
}
