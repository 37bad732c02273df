#include "game/WQKnownDungeons.h"
#include "game/WQMapCoordinate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>

namespace {

std::size_t countOf(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

TEST(KnownDungeons, ShippedTableHoldsWhatItPromises) {
    std::size_t rows = 0, withoutEntrance = 0, unsure = 0, alternatives = 0, firstColumn = 0;
    unsigned smallest = 0xFFFF, greatest = 0;
    std::set<std::string_view> names;
    std::set<unsigned> keys;

    for (const WQKnownDungeon *row = WQKnownDungeonTable; row->name != nullptr; ++row, ++rows) {
        const std::string_view name = row->name;
        ASSERT_NE(row->entrance, nullptr);
        std::string_view entrances = row->entrance;
        names.insert(name);
        keys.insert(row->key);
        withoutEntrance += entrances.empty();
        unsure += name.starts_with("?? ");
        alternatives += name.find(" / ") != name.npos;
        firstColumn += row->key < 0x0100;
        smallest = std::min<unsigned>(smallest, row->key);
        greatest = std::max<unsigned>(greatest, row->key);
        EXPECT_LT(row->key & 0xFF, 255) << name;

        while (!entrances.empty()) {
            const std::size_t end = std::min(entrances.find(", "), entrances.size());
            WQMapLocation place;
            EXPECT_TRUE(WQMapCoordinateFromString(entrances.substr(0, end), &place)) << name;
            EXPECT_LT(std::max(std::fabs(place.x), std::fabs(place.y)), 101.9) << name;
            entrances.remove_prefix(std::min(end + 2, entrances.size()));
        }
    }

    EXPECT_EQ(rows, 1047u);
    EXPECT_EQ(names.size(), rows);
    EXPECT_EQ(keys.size(), rows);
    EXPECT_EQ(withoutEntrance, 420u);
    EXPECT_EQ(unsure, 44u);
    EXPECT_EQ(alternatives, 33u);
    EXPECT_EQ(firstColumn, 214u);
    EXPECT_EQ(smallest, 0x0001u);
    EXPECT_EQ(greatest, 0xF93Bu);
}

TEST(KnownDungeons, SharedNamesAreCountedOnce) {
    testing::internal::CaptureStderr();
    const WQKnownDungeonDictionary &names = WQKnownDungeonNames();
    EXPECT_EQ(&WQKnownDungeonNames(), &names);
    EXPECT_LE(countOf(testing::internal::GetCapturedStderr(), "known dungeons"), 1u);

    EXPECT_EQ(names.size(), 1047u);
    EXPECT_EQ(names.at(0x0004), "Northern Power Forge");
    EXPECT_EQ(names.at(0x0007), "Town Network");
    EXPECT_EQ(names.at(0x0009), "Defiled Temple Upper Wing");
    EXPECT_FALSE(names.contains(0x0000));
    EXPECT_FALSE(names.contains(0x10004));
}

TEST(KnownDungeons, LaterNameOfARepeatedKeyWins) {
    const WQKnownDungeon table[] = {
        {0x004A, "", "First"}, {0xBEEF, "", "Other"}, {0x004A, "", "Second"}, {}};
    testing::internal::CaptureStderr();
    const auto names = WQKnownDungeonNamesOfTable(table);
    const WQKnownDungeon emptyTable[] = {{}};
    EXPECT_TRUE(WQKnownDungeonNamesOfTable(emptyTable).empty());
    const std::string log = testing::internal::GetCapturedStderr();

    EXPECT_EQ(names.size(), 2u);
    EXPECT_EQ(names.at(0x004A), "Second");
    EXPECT_EQ(countOf(log, "] Warning: Duplicate key: 004a\n"), 1u);
    EXPECT_EQ(countOf(log, "] 3 known dungeons\n"), 1u);
    EXPECT_EQ(countOf(log, "] 0 known dungeons\n"), 1u);
}

} // namespace
