#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include "game/WQLandBlock.h"

#include <gtest/gtest.h>

namespace {

/// A record with `word` at each vertex; heights count up from 0.
ZPData recordOf(std::uint32_t flags, std::uint16_t word) {
    ZPData bytes = words({0x7F01FFFF, flags});
    for (int vertex = 0; vertex < 81; ++vertex)
        ZPAppendLittleInt16(bytes, word);
    for (int vertex = 0; vertex < 82; ++vertex)
        bytes.push_back(static_cast<std::byte>(vertex));
    return bytes;
}

void setWord(ZPData &record, unsigned vertex, std::uint16_t word) {
    record[8 + 2 * vertex] = static_cast<std::byte>(word);
    record[9 + 2 * vertex] = static_cast<std::byte>(word >> 8);
}

WQLandBlock decoded(const ZPData &record) {
    return std::move(ZPRecordWithData<WQLandBlock>(record, nullptr).value());
}

TEST(LandBlock, DecodesAndWritesBack) {
    ZPData record = recordOf(1, 0x0028);
    setWord(record, 1, 0xABCD);
    setWord(record, 80, 0x1234);
    const WQLandBlock block = decoded(record);
    EXPECT_EQ(block.identifier(), 0x7F01FFFFu);
    EXPECT_TRUE(block.hasObjectBlock());
    EXPECT_EQ(block.topology()[WQLandBlock::indexOfVertex(0, 1)], 0xABCD);
    EXPECT_EQ(block.topology()[WQLandBlock::indexOfVertex(8, 8)], 0x1234);
    EXPECT_EQ(block.height()[WQLandBlock::indexOfVertex(1, 0)], 9);
    EXPECT_EQ(block.averageHeight(), 40);

    ZPData written = hex("ff");
    block.writeToData(written);
    EXPECT_EQ(written, ZPData(record.begin(), record.begin() + 251));

    for (const std::uint32_t flags : {0u, 3u, 0x101u})
        EXPECT_FALSE(decoded(recordOf(flags, 0)).hasObjectBlock()) << flags;
}

TEST(LandBlock, LengthsOtherThanTheRecords) {
    ZPData record = recordOf(1, 0x0028);
    CapturedLog captured;
    for (std::size_t length = 0; length < record.size(); ++length) {
        ZPError error;
        EXPECT_FALSE(
            ZPRecordWithData<WQLandBlock>(std::span(record).first(length), nullptr, &error));
        EXPECT_EQ(error.code, 5);
    }
    record.resize(255);
    EXPECT_TRUE(ZPRecordWithData<WQLandBlock>(record, nullptr));
    EXPECT_NE(captured.take().find("[7f01ffff] Warning: 3 bytes left"), std::string::npos);
}

TEST(LandBlock, WaterAndPassability) {
    const struct {
        std::uint16_t all, last;
        bool isAllDeepWater, isPassable;
    } cases[] = {{0x0050, 0x0050, true, false},   {0x0051, 0x0053, true, false},
                 {0xF850, 0x0750, true, false},   {0xF850, 0xFF50, true, false},
                 {0x0050, 18 << 2, false, false}, {19 << 2, 0x0050, false, false},
                 {0x0050, 21 << 2, false, true},  {0x0050, 17 << 2, false, true},
                 {0x0050, 0x00D0, false, true},   {0x0000, 0x0050, false, true}};
    for (const auto &c : cases) {
        ZPData record = recordOf(0, c.all);
        setWord(record, 80, c.last);
        const WQLandBlock block = decoded(record);
        EXPECT_EQ(block.isAllDeepWater(), c.isAllDeepWater) << c.last;
        EXPECT_EQ(block.isPassable(), c.isPassable) << c.last;
    }
    ZPData high = recordOf(0, 0);
    std::fill(high.end() - 82, high.end(), std::byte{255});
    EXPECT_EQ(decoded(high).averageHeight(), 255);
    std::fill(high.end() - 82, high.end(), std::byte{1});
    high[170] = std::byte{0};
    EXPECT_EQ(decoded(high).averageHeight(), 0);
}

TEST(LandBlock, DumpShowsTerrainLikeAMapAndHeightsAsStored) {
    const TemporaryFolder folder;
    ZPData record = recordOf(1, 0x0028);
    setWord(record, WQLandBlock::indexOfVertex(0, 8), 0xABCD); // the north-west corner
    ASSERT_TRUE(decoded(record).saveToPath(folder / "block", nullptr));
    const std::string dump = textOfFile(folder / "block");
    const std::string rule = std::string(40, '-') + "\n";
    for (const std::string &part :
         {std::string("identifier: 7f01ffff\nobject block present: 00000001\nisPassable? 1\n"
                      "Coords: 101.1S   0.3W (7f01ffff 7f01 {-0.29999999999999716, -101.1000"),
          rule + "topology\nabcd  0028  0028  0028  0028  0028  0028  0028  0028 \n0028  ",
          rule + "topology (roads - bits 0-1)\nroads: 1  0  0  0  0  0  0  0  0 \nroads: 0  ",
          rule + "topology (terrain - bits 2-6)\nterrain: 13  0a  0a  0a  0a  0a  0a  0a  0a \n",
          rule + "topology (terrain objects - bits 11-15)\nother: 15  00  00  ",
          rule + "topology (unknown - bits 7-10)\nmid 4: 7  0  0  ",
          rule + "height\n00  01  02  03  04  05  06  07  08 \n09  "})
        EXPECT_NE(dump.find(part), std::string::npos) << part << dump;
    EXPECT_TRUE(dump.ends_with("48  49  4a  4b  4c  4d  4e  4f  50 \n"));
}

TEST(LandBlock, EditingOperations) {
    WQLandBlock block = decoded(recordOf(1, 0xF8FC));
    block.clearObjectBlockFlag();
    block.changeTopBits();
    EXPECT_EQ(block.objectBlockPresent(), 0u);
    EXPECT_EQ(block.topology()[80], 0x00FC);

    // Column 0x7F, row 1: k is 18, so that the markers are 72 - 800 and 72 - 796.
    const auto word = [&](unsigned element) { return block.topology()[element]; };
    constexpr std::uint16_t kA = 0xFD28, kB = 0xFD2C;
    CapturedLog captured;
    block.changeLandTypes(5);
    EXPECT_EQ(word(0), (0x7F + 5 - 130) * 4);
    EXPECT_EQ(word(WQLandBlock::indexOfVertex(3, 5)), 0x10000 + (2 + 4 - 400) * 4);
    block.changeLandTypes2(3);
    EXPECT_EQ((std::array{word(0), word(46), word(47), word(13), word(50)}),
              (std::array<std::uint16_t, 5>{40, kA, 12, kB, 12}));
    block.changeLandTypes3(3);
    EXPECT_EQ((std::array{word(0), word(46), word(47), word(13), word(50)}),
              (std::array<std::uint16_t, 5>{40, 12, kA, 12, kB}));
    block.changeLandTypes4();
    EXPECT_EQ((std::array{word(47), word(46), word(37), word(50), word(49), word(40)}),
              (std::array<std::uint16_t, 6>{0, 40, kA, 0, 40, kB}));
    // An even column beside it: k is 2.
    ZPData beside = recordOf(1, 0);
    beside[3] = std::byte{0x7E};
    WQLandBlock even = decoded(beside);
    even.changeLandTypes2(3);
    EXPECT_EQ(even.topology()[46], 0x10000 + 8 - 800);
    const std::string log = captured.take();
    EXPECT_NE(log.find("b) xx: 0x7f, yy: 0x01, t2: 0xfd2c, ind: 16203"), std::string::npos) << log;
    EXPECT_NE(log.find("t1:  0, t2: fd2c, t3: 28"), std::string::npos);
}

} // namespace
