#pragma once

#include "io/ZPParallel.h"

/// Calls the body for each row or column of a grid, several at a time.
inline void SampleForEachLine(int count, const std::function<void(int line)> &body) {
    ZPParallelFor(static_cast<std::size_t>(count),
                  [&body](std::size_t line) { body(static_cast<int>(line)); });
}
