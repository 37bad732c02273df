#include "io/ZPParallel.h"

#include <algorithm>

void ZPParallelFor(std::size_t count, const std::function<void(std::size_t)> &body) {
    for (std::size_t index = 0; index < count; ++index)
        body(index);
}

void ZPParallelRanges(std::size_t count, std::size_t mostPerRange,
                      const std::function<void(std::size_t, std::size_t)> &body) {
    for (std::size_t first = 0; first < count; first += mostPerRange)
        body(first, std::min(count, first + mostPerRange));
}

void ZPParallelInOrder(std::size_t count, const std::function<void(std::size_t)> &make,
                       const std::function<bool(std::size_t)> &use) {
    for (std::size_t index = 0; index < count; ++index) {
        make(index);
        if (!use(index))
            return;
    }
}

void ZPWithoutOtherWork(const std::function<void()> &body) {
    body();
}

void ZPWithThreads(unsigned, const std::function<void()> &body) {
    body();
}
