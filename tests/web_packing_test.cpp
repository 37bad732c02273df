// The land as the page carries it, undone by zlib.

#include "web/WQLandPacking.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <zlib.h>

namespace {

constexpr std::size_t kPoints = std::size_t{kWQLandSize} * kWQLandSize;
constexpr std::size_t kLength = 3 * kPoints + 0x10000;

/// All bytes up to the end of the deflated data, which must be the end of the packed bytes.
std::vector<std::uint8_t> inflated(const ZPData &packed, std::size_t most) {
    std::vector<std::uint8_t> bytes(most + 1);
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, -15), Z_OK);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<std::byte *>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = bytes.data();
    stream.avail_out = static_cast<uInt>(bytes.size());
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    EXPECT_EQ(stream.avail_in, 0u);
    bytes.resize(stream.total_out);
    inflateEnd(&stream);
    return bytes;
}

class LandPacking : public testing::Test {
  protected:
    static std::size_t at(std::size_t part, unsigned x, unsigned y) {
        return part * kPoints + y * std::size_t{kWQLandSize} + x;
    }

    std::unique_ptr<WQLandGrid> land = WQLandGrid::allocate(), older = WQLandGrid::allocate();
    WQBlockFlags blocks{}, olderBlocks{};
};

} // namespace

TEST_F(LandPacking, HeightsAreLessTheMedianOfTheirNeighbors) {
    land->at(0, 0).heightIndex = 10;
    land->at(1, 0).heightIndex = 12;
    land->at(0, 1).heightIndex = 11;
    land->at(1, 1).heightIndex = 20;
    // The last row and column, and the first row of a band of rows.
    land->at(2040, 2040).heightIndex = 7;
    land->at(5, 127).heightIndex = 100;
    land->at(5, 128).heightIndex = 100;
    const auto bytes = inflated(WQPackLand({*land, blocks}, nullptr), kLength);
    ASSERT_EQ(bytes.size(), kLength);
    EXPECT_EQ(bytes[at(0, 0, 0)], 10);
    EXPECT_EQ(bytes[at(0, 1, 0)], 2);   // west 10, nothing south: 10
    EXPECT_EQ(bytes[at(0, 2, 0)], 244); // 0 less 12
    EXPECT_EQ(bytes[at(0, 0, 1)], 1);   // south 10: 10
    EXPECT_EQ(bytes[at(0, 1, 1)], 8);   // west 11, south 12, between 10: 12
    EXPECT_EQ(bytes[at(0, 2, 1)], 248); // west 20, south 0, between 12: 20 + 0 - 12
    EXPECT_EQ(bytes[at(0, 2040, 2040)], 7);
    EXPECT_EQ(bytes[at(0, 5, 127)], 100);
    EXPECT_EQ(bytes[at(0, 5, 128)], 0);
    EXPECT_EQ(bytes[at(0, 6, 127)], 156); // west 100, nothing else: 0 less 100
    EXPECT_EQ(bytes[at(0, 6, 128)], 0);   // west 100, south 0, between 100: 0
}

TEST_F(LandPacking, WordsGoByBytesAndFlagsByNumber) {
    land->at(3, 1).terrainWord = 0xA1B2;
    land->at(2040, 2040).terrainWord = 0x0304;
    blocks[0x0000] = 1;
    blocks[0xFE01] = 7;
    const auto bytes = inflated(WQPackLand({*land, blocks}, nullptr), kLength);
    ASSERT_EQ(bytes.size(), kLength);
    EXPECT_EQ(bytes[at(1, 3, 1)], 0xB2);
    EXPECT_EQ(bytes[at(2, 3, 1)], 0xA1);
    EXPECT_EQ(bytes[at(1, 2040, 2040)], 0x04);
    EXPECT_EQ(bytes[at(2, 2040, 2040)], 0x03);
    EXPECT_EQ(bytes[3 * kPoints], 1);
    EXPECT_EQ(bytes[3 * kPoints + 0xFE01], 7);
    EXPECT_EQ(std::ranges::count(bytes, 0), std::ptrdiff_t(kLength - 6));
}

TEST_F(LandPacking, AnOlderLandFollowsAsDifferences) {
    land->at(9, 9) = {0x1234, 40, 1};
    older->at(9, 9) = {0x1335, 30, 1};
    land->at(2040, 0) = older->at(2040, 0) = {0x5678, 99, 1};
    olderBlocks[0x0101] = 3;
    const WQPackableLand olderLand{*older, olderBlocks};
    const auto bytes = inflated(WQPackLand({*land, blocks}, &olderLand), 2 * kLength);
    ASSERT_EQ(bytes.size(), 2 * kLength);
    EXPECT_EQ(bytes[at(0, 9, 9)], 40);
    EXPECT_EQ(bytes[kLength + at(0, 9, 9)], 246); // 30 less 40
    EXPECT_EQ(bytes[kLength + at(1, 9, 9)], 0x01);
    EXPECT_EQ(bytes[kLength + at(2, 9, 9)], 0x01);
    EXPECT_EQ(bytes[2 * kLength - 0x10000 + 0x0101], 3);
    EXPECT_EQ(std::count(bytes.begin() + kLength, bytes.end(), 0), std::ptrdiff_t(kLength - 4));
}

TEST_F(LandPacking, NoiseTakesLittleMoreThanItself) {
    std::uint32_t state = 1;
    for (unsigned y = 0; y < kWQLandSize; ++y)
        for (unsigned x = 0; x < kWQLandSize; ++x) {
            state = state * 1664525 + 1013904223;
            land->at(x, y) = {static_cast<std::uint16_t>(state >> 16),
                              static_cast<std::uint8_t>(state >> 8), 1};
        }
    const ZPData packed = WQPackLand({*land, blocks}, nullptr);
    EXPECT_LT(packed.size(), kLength + kLength / 1000);
    const auto bytes = inflated(packed, kLength);
    ASSERT_EQ(bytes.size(), kLength);
    EXPECT_EQ(bytes[at(1, 1000, 1500)], land->at(1000, 1500).terrainWord & 0xFF);
}
