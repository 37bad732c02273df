#include "game/WQKnownDungeons.h"
#include "tests/TestSupport.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace {

// The table is the user's to replace: what holds for any.
TEST(KnownDungeons, SharedNamesAreThoseOfTheTableAndAreCountedOnce) {
    CapturedLog captured;
    const WQKnownDungeonDictionary &names = WQKnownDungeonNames();
    EXPECT_EQ(&WQKnownDungeonNames(), &names);
    EXPECT_LE(countOf(captured.take(), "known dungeons"), 1u);

    std::map<unsigned, std::string_view> expected;
    for (const WQKnownDungeon *row = WQKnownDungeonTable; row->name != nullptr; ++row) {
        ASSERT_NE(row->entrance, nullptr);
        expected[row->key] = row->name;
    }
    EXPECT_EQ(names.size(), expected.size());
    for (const auto &[key, name] : expected) {
        EXPECT_EQ(names.at(key), name);
        EXPECT_FALSE(names.contains(key + 0x10000));
    }
}

TEST(KnownDungeons, LaterNameOfARepeatedKeyWins) {
    const WQKnownDungeon table[] = {
        {0x004A, "", "First"}, {0xBEEF, "", "Other"}, {0x004A, "", "Second"}, {}};
    CapturedLog captured;
    const auto names = WQKnownDungeonNamesOfTable(table);
    const WQKnownDungeon emptyTable[] = {{}};
    EXPECT_TRUE(WQKnownDungeonNamesOfTable(emptyTable).empty());
    const std::string log = captured.take();

    EXPECT_EQ(names.size(), 2u);
    EXPECT_EQ(names.at(0x004A), "Second");
    EXPECT_EQ(countOf(log, "] Warning: Duplicate key: 004a\n"), 1u);
    EXPECT_EQ(countOf(log, "] 3 known dungeons\n"), 1u);
    EXPECT_EQ(countOf(log, "] 0 known dungeons\n"), 1u);
}

} // namespace
