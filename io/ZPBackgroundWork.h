#pragma once

#include <functional>
#include <future>

/// Does the work on a thread of its own, or at once where none can be made. Destroying the result
/// waits for the end.
[[nodiscard]] std::future<void> ZPDoInBackground(const std::function<void()> &work);
