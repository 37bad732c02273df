// Work shared out among threads, whatever stands behind it.

#include "io/ZPParallel.h"
#include "io/ZPThreadValues.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

namespace {

TEST(Parallel, EachIndexHasItsTurnOnceAlsoInNestedWork) {
    for (const std::size_t count : {0u, 1u, 63u, 1000u})
        for (const std::size_t most : {1u, 7u, 1000u, 5000u}) {
            SCOPED_TRACE(testing::Message() << count << " by " << most);
            std::vector<std::atomic<int>> turns(count), nested(count);
            std::atomic<bool> isWithinLimit = true;
            ZPParallelRanges(count, most, [&](std::size_t first, std::size_t end) {
                isWithinLimit = isWithinLimit && first < end && end - first <= most;
                ZPParallelFor(end - first, [&](std::size_t index) { ++nested[first + index]; });
                for (std::size_t index = first; index < end; ++index)
                    ++turns[index];
            });
            EXPECT_TRUE(isWithinLimit);
            EXPECT_EQ(std::count(turns.begin(), turns.end(), 1), std::ptrdiff_t(count));
            EXPECT_EQ(std::count(nested.begin(), nested.end(), 1), std::ptrdiff_t(count));
        }
}

TEST(Parallel, WhatIsMadeSideBySideIsUsedInOrderUntilItIsNotWanted) {
    constexpr std::size_t kCount = 500, kLast = 123;
    for (const std::size_t last : {kLast, kCount}) {
        std::vector<std::atomic<int>> made(kCount);
        std::vector<std::size_t> used;
        const auto make = [&](std::size_t index) { ++made[index]; };
        const auto use = [&](std::size_t index) {
            EXPECT_EQ(made[index], 1);
            used.push_back(index);
            return index != last;
        };
        ZPWithThreads(4, [&] { ZPParallelInOrder(kCount, make, use); });
        ASSERT_EQ(used.size(), std::min(last + 1, kCount));
        for (std::size_t index = 0; index < used.size(); ++index)
            EXPECT_EQ(used[index], index);
        // Some are under way when the last one is used, and few more are begun.
        if (last < kCount) {
            EXPECT_LT(std::count(made.begin(), made.end(), 1), std::ptrdiff_t(kCount));
        }
    }
}

TEST(Parallel, AnExceptionReachesTheCallerFromWhereverItIsThrown) {
    const auto refuse = [](std::size_t index) {
        if (index == 40)
            throw std::out_of_range("refused");
    };
    const auto pass = [](std::size_t) {};
    EXPECT_THROW(ZPParallelFor(100, refuse), std::out_of_range);
    EXPECT_THROW(ZPParallelRanges(100, 3,
                                  [&](std::size_t first, std::size_t end) {
                                      while (first < end)
                                          refuse(first++);
                                  }),
                 std::out_of_range);
    const auto useAll = [](std::size_t) { return true; };
    EXPECT_THROW(ZPParallelInOrder(100, refuse, useAll), std::out_of_range);
    EXPECT_THROW(ZPParallelInOrder(100, pass,
                                   [&](std::size_t index) {
                                       refuse(index);
                                       return true;
                                   }),
                 std::out_of_range);
    EXPECT_THROW(ZPWithoutOtherWork([&] { refuse(40); }), std::out_of_range);
}

TEST(Parallel, AThreadsValueIsItsOwn) {
    ZPThreadValues<std::vector<std::size_t>> values([] { return std::vector<std::size_t>{7}; });
    ZPWithThreads(4, [&] {
        ZPParallelFor(1000, [&](std::size_t index) { values.local().push_back(index); });
    });
    std::vector<std::size_t> all;
    values.forEach([&all](std::vector<std::size_t> &value) {
        ASSERT_EQ(value.front(), 7u);
        all.insert(all.end(), value.begin() + 1, value.end());
    });
    std::ranges::sort(all);
    ASSERT_EQ(all.size(), 1000u);
    EXPECT_EQ(all.back(), 999u);
}

} // namespace
