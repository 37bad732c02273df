#include "archive/ZPGorvaneFindingCollector.h"
#include "archive/ZPGorvaneLostIdentifiers.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using enum ZPGorvaneFinding::Severity;

TEST(FindingCollector, CountsEachPlaceOnceAndKeepsTheFirstWhoeverIsQuicker) {
    constexpr std::uint32_t kFiles = 5000;
    ZPGorvaneFindingCollector collector;
    EXPECT_TRUE(collector.add({error, kZPGorvaneDirectoryFinding, std::nullopt, 2048, "first"}));
    EXPECT_TRUE(collector.add({error, kZPGorvaneDirectoryFinding, std::nullopt, 1024, "second"}));
    // Two faults at one place are one.
    EXPECT_FALSE(collector.add({error, kZPGorvaneOrderFinding, std::nullopt, 1024, "third"}));
    {
        std::vector<std::jthread> threads;
        for (std::uint32_t thread = 0; thread < 3; ++thread)
            threads.emplace_back([&collector, thread] {
                for (std::uint32_t step = 0; step < kFiles; ++step) {
                    const std::uint32_t number = (step * 7 + thread * 1000) % kFiles;
                    collector.add({error, kZPGorvaneSizeFinding, number, 1024, "x"});
                }
            });
    }
    EXPECT_EQ(collector.count(), kFiles + 2);
    EXPECT_EQ(collector.countWithoutFile(), 2u);
    const ZPGorvaneFindings kept = collector.kept();
    ASSERT_EQ(kept.size(), ZPGorvaneFindingCollector::kMostKept);
    EXPECT_EQ(kept[0].text(), "first");
    EXPECT_EQ(kept[1].text(), "second");
    for (std::uint32_t place = 2; place < kept.size(); ++place)
        ASSERT_EQ(kept[place].identifier, place - 2);
    EXPECT_EQ(kept[3].text(), "00000001: x");
}

TEST(LostIdentifiers, AreThoseBetweenWhatCouldBeRead) {
    ZPGorvaneLostIdentifiers lost;
    EXPECT_TRUE(lost.empty());
    const std::pair<std::int64_t, std::int64_t> gaps[] = {
        {50, 60}, {-1, 5}, {55, 70}, {80, 81}, {0xFFFFFFF0, std::int64_t{1} << 32}};
    for (const auto &[above, below] : gaps)
        lost.addBetween(above, below);
    lost.tidy();
    for (const std::uint32_t identifier : {0u, 4u, 51u, 60u, 69u, 0xFFFFFFF1u, 0xFFFFFFFFu})
        EXPECT_TRUE(lost.contains(identifier)) << identifier;
    for (const std::uint32_t identifier : {5u, 50u, 70u, 80u, 81u, 0xFFFFFFF0u})
        EXPECT_FALSE(lost.contains(identifier)) << identifier;
}

} // namespace
