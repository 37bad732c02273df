#pragma once

#include "tests/threads/Crew.h"

#include <algorithm>
#include <atomic>
#include <tbb/blocked_range.h>

namespace tbb {

struct simple_partitioner {};

/// In pieces of the grain size, whichever the partitioner: the most that can happen side by side.
template <class Value, class Body, class... Partitioner>
void parallel_for(const blocked_range<Value> &range, const Body &body, const Partitioner &...) {
    const std::size_t grain = std::max<std::size_t>(range.grainsize(), 1);
    const std::size_t count = (range.size() + grain - 1) / grain;
    std::atomic<std::size_t> next = 0;
    threads::runCrew(count, [&] {
        for (std::size_t piece = next++; piece < count; piece = next++) {
            const auto first = range.begin() + static_cast<Value>(piece * grain);
            const auto length = static_cast<Value>(std::min(grain, range.size() - piece * grain));
            body(blocked_range<Value>(first, first + length, grain));
        }
    });
}

template <class Index, class Body, class... Partitioner>
void parallel_for(Index first, Index last, const Body &body, const Partitioner &...partitioner) {
    const auto forRange = [&body](const blocked_range<Index> &range) {
        for (Index index = range.begin(); index != range.end(); ++index)
            body(index);
    };
    parallel_for(blocked_range<Index>(first, last), forRange, partitioner...);
}

} // namespace tbb
