#include "io/ZPError.h"
#include "io/ZPParallel.h"
#include "io/ZPParallelLog.h"
#include "io/ZPSystemLog.h"
#include "tests/TestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <thread>

namespace {

/// What a number of threads logs, each line without time and process.
std::vector<std::string> linesOf(unsigned threads, const std::function<void()> &work) {
    CapturedLog captured;
    ZPWithThreads(threads, work);
    std::istringstream log(captured.take());
    std::vector<std::string> lines;
    for (std::string line; std::getline(log, line);)
        lines.push_back(line.substr(line.find("] ") + 2));
    return lines;
}

/// Parts that end in another order than they begin in.
void dawdle(std::size_t part) {
    std::this_thread::sleep_for(std::chrono::microseconds(part % 3 == 0 ? 500 : part % 7 * 50));
}

TEST(ParallelLog, LogInTheirOrderOnAnyNumberOfThreads) {
    std::vector<std::string> expected;
    for (std::size_t part = 0; part < 40; ++part)
        for (const char *inner : {"", ".0", ".1", " done"})
            if (part % 5 != 4) // some say nothing
                expected.push_back(ZPFormat("part %zu%s", part, inner));
    for (const unsigned threads : {1u, 2u, 7u}) {
        std::array<std::atomic<int>, 40> count{};
        EXPECT_EQ(linesOf(threads,
                          [&] {
                              ZPParallelForWithLog(0, [](std::size_t) { FAIL(); });
                              ZPParallelForWithLog(count.size(), [&](std::size_t part) {
                                  ++count[part];
                                  dawdle(part);
                                  if (part % 5 == 4)
                                      return;
                                  ZPLog("part %zu", part);
                                  // Parts of a part.
                                  ZPParallelForWithLog(2, [part](std::size_t inner) {
                                      dawdle(inner + part);
                                      ZPLog("part %zu.%zu", part, inner);
                                  });
                                  ZPLog("part %zu done", part);
                              });
                          }),
                  expected)
            << threads;
        for (const auto &times : count)
            EXPECT_EQ(times, 1);
    }
}

TEST(ParallelLog, ExceptionEndsThem) {
    for (const unsigned threads : {1u, 7u}) {
        std::atomic<std::size_t> begun = 0;
        const auto lines = linesOf(threads, [&begun] {
            EXPECT_THROW(ZPParallelForWithLog(100'000,
                                              [&begun](std::size_t part) {
                                                  ++begun;
                                                  ZPLog("part %zu", part);
                                                  if (part == 50)
                                                      throw ZPGenericException("the fiftieth");
                                              }),
                         ZPGenericException);
            ZPLog("after");
        });
        // Whatever had begun has said so, in order, and this thread's log is its own again.
        EXPECT_LT(begun, 90'000u);
        ASSERT_EQ(lines.size(), begun + 1);
        for (std::size_t index = 0; index <= 50; ++index)
            EXPECT_EQ(lines[index], ZPFormat("part %zu", index));
        EXPECT_EQ(lines.back(), "after");
    }
}

} // namespace
