#pragma once

#include <cstddef>
#include <functional>

/// ZPParallelFor for work that logs: what the body logs for an index comes after what it logged for
/// those before, as if one thread had done it all. Until then its lines are held in memory; indexes
/// are taken up in their order.
void ZPParallelForWithLog(std::size_t count, const std::function<void(std::size_t index)> &body);

/// The same by ranges, see ZPParallelRanges.
void ZPParallelRangesWithLog(std::size_t count, std::size_t mostPerRange,
                             const std::function<void(std::size_t first, std::size_t end)> &body);
