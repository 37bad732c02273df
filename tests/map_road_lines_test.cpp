#include "map/land/WQRoadLines.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace {

using testing::UnorderedElementsAre;

/// The lines of roads drawn as a picture, the north row first, whose corner lies at a place; each
/// line as its places in digits, the end of lesser place first.
std::vector<std::string> linesOf(const std::vector<std::string> &rows, WQLandPlace corner = {}) {
    const auto grid = WQLandGrid::allocate();
    for (unsigned row = 0; row < rows.size(); ++row)
        for (unsigned column = 0; column < rows[row].size(); ++column)
            if (rows[rows.size() - 1 - row][column] == '#')
                grid->at(corner.column + column, corner.row + row).terrainWord = 1;
    std::vector<std::string> texts;
    for (auto line : WQTraceRoads(*grid)) {
        std::vector<std::string> places;
        for (const WQLandPlace place : line)
            places.push_back(std::to_string(place.column) + std::to_string(place.row));
        if (places.back() < places.front())
            std::ranges::reverse(places);
        std::string text;
        for (const std::string &place : places)
            text += place + " ";
        texts.push_back(text);
    }
    return texts;
}

TEST(RoadLines, FollowRoadsFromEndToEnd) {
    // A bend, with what lies straight between left out; a crossing ends four lines; a corner that
    // the road goes round is not cut, one that it does not is; a single point; a ring.
    EXPECT_THAT(linesOf({"   #", "   #", "####"}), UnorderedElementsAre("00 30 32 "));
    EXPECT_THAT(linesOf({" # ", "###", " # "}),
                UnorderedElementsAre("01 11 ", "11 12 ", "11 21 ", "10 11 "));
    EXPECT_THAT(linesOf({"  #", " # ", "#  "}), UnorderedElementsAre("00 22 "));
    EXPECT_THAT(linesOf({"#  ", "   ", "  #"}), UnorderedElementsAre("02 ", "20 "));
    // At the edges of the world.
    EXPECT_THAT(linesOf({"##", "  "}, {2039, 2039}), UnorderedElementsAre("20392040 20402040 "));
    EXPECT_THAT(linesOf({" #", " #"}, {2039, 2039}), UnorderedElementsAre("20402039 20402040 "));
    const auto ring = linesOf({"###", "# #", "###"});
    ASSERT_EQ(ring.size(), 1u);
    EXPECT_EQ(ring[0].substr(0, 3), ring[0].substr(ring[0].size() - 3));
}

} // namespace
