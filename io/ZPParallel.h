#pragma once

#include <cstddef>
#include <functional>

// Work shared out among the processors. The build picks what stands behind it, one file of
// io/parallel/: oneTBB as a rule, standard threads where ThreadSanitizer watches, nothing but the
// caller's thread where there are no others.
//
// The first exception that a body throws is thrown again to the caller, when all work has ended.
// Bodies may share out work of their own. A body throws no bare std::runtime_error, which stands
// for a thread that was refused.

/// Calls `body` once for each index below `count`, in any order and several at a time.
void ZPParallelFor(std::size_t count, const std::function<void(std::size_t index)> &body);

/// The same by ranges of at most `mostPerRange` indexes, for bodies that are done quickly or have
/// something to set up.
void ZPParallelRanges(std::size_t count, std::size_t mostPerRange,
                      const std::function<void(std::size_t first, std::size_t end)> &body);

/// Calls `make` for each index below `count`, several at a time, and `use` for one after the other
/// in their order, once it is made. Begins no further ones when `use` has given false. What is made
/// and not yet used is twice as much as there are processors, at most.
void ZPParallelInOrder(std::size_t count, const std::function<void(std::size_t index)> &make,
                       const std::function<bool(std::size_t index)> &use);

/// Runs the body, and lets its thread take up no other work while it waits for those who help with
/// it. For work under a lock, which such other work might want.
void ZPWithoutOtherWork(const std::function<void()> &body);

/// Runs the body, and shares out its work among so many threads, whatever the machine has.
void ZPWithThreads(unsigned count, const std::function<void()> &body);
