#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>

/// How far a long work has come, as one line on standard error that changes in place; nothing where
/// that is no terminal. Work may be done by several threads.
class Progress {
  public:
    Progress(const char *label, std::size_t total);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void add(std::size_t count = 1) {
        const std::size_t done = _done += count;
        if (_isShown)
            show(done);
    }

  private:
    void show(std::size_t done);

    const char *_label;
    const std::size_t _total;
    const bool _isShown;
    std::atomic<std::size_t> _done = 0;
    std::atomic<std::chrono::steady_clock::rep> _nextShowing = 0;
};
