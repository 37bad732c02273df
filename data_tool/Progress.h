#pragma once

#include "io/ZPTerminal.h"

#include <atomic>
#include <chrono>
#include <cstddef>

/// How far a long work has come, for who watches it. Work may be done by several threads.
class Progress {
  public:
    /// Borrows the label.
    Progress(const char *label, std::size_t total) : _label(label), _total(total) {}

    void add(std::size_t count = 1) {
        const std::size_t done = _done += count;
        if (_line.isShown())
            show(done);
    }

  private:
    void show(std::size_t done);

    const char *_label;
    const std::size_t _total;
    ZPProgressLine _line;
    std::atomic<std::size_t> _done = 0;
    std::atomic<std::chrono::steady_clock::rep> _nextShowing = 0;
};
