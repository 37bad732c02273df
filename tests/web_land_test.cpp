// Which blocks of the page have land, and what became of them.

#include "game/WQLandBlock.h"
#include "tests/ArchiveBytes.h"
#include "tests/TestSupport.h"
#include "web/WQWebLand.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint8_t kLand = WQLandPoint::hasData, kPassable = WQLandPoint::isPassable,
                       kObjects = WQLandPoint::hasObjectBlock;

/// Client data whose cell archive has these blocks: by number, whether they have objects, and the
/// word of all their points.
std::unique_ptr<WQClientData>
clientData(const TemporaryFolder &folder,
           std::initializer_list<std::tuple<std::uint32_t, bool, std::uint16_t>> blocks) {
    ArchiveBytes archive;
    for (const auto &[number, hasObjects, word] : blocks) {
        ZPData record = words({number << 16 | 0xFFFF, hasObjects ? 1u : 0u});
        for (unsigned vertex = 0; vertex < WQLandBlock::kVertexCount; ++vertex)
            ZPAppendLittleInt16(record, word);
        record.resize(WQLandBlock::kRecordSize);
        archive.addFile(number << 16 | 0xFFFF, record);
    }
    archive.writeToPath(folder / "client_cell_1.dat");
    testing::internal::CaptureStdout();
    auto data = std::make_unique<WQClientData>(folder.path());
    testing::internal::GetCapturedStdout();
    data->loadAllFileEntries();
    return data;
}

std::map<std::uint32_t, unsigned> flagged(const WQBlockFlags &blocks) {
    std::map<std::uint32_t, unsigned> found;
    for (std::uint32_t number = 0; number < blocks.size(); ++number)
        if (blocks[number] != 0)
            found[number] = blocks[number];
    return found;
}

} // namespace

TEST(WebLand, FlagsTheBlocksThatAreThereAndNoNeighbor) {
    constexpr std::uint16_t kDeepWater = 20 << 2;
    const TemporaryFolder newer, older;
    CapturedLog captured;
    const auto current = clientData(newer, {{0x0001, false, kDeepWater},
                                            {0x0101, true, 0},
                                            {0x0303, false, kDeepWater},
                                            {0x0500, false, kDeepWater},
                                            {0xFEFE, false, 0}});
    const auto old = clientData(older, {{0x0001, false, kDeepWater},
                                        {0x0303, false, 0},
                                        {0x0500, false, kDeepWater},
                                        {0x0505, false, 0},
                                        {0xFEFE, false, 0}});
    const auto land = WQWebLand::readLand(*current, nullptr);
    ASSERT_TRUE(land);
    EXPECT_EQ(land->landBlockCount, 5u);
    EXPECT_EQ(flagged(land->blocks),
              (std::map<std::uint32_t, unsigned>{{0x0001, kLand},
                                                 {0x0101, kLand | kObjects | kPassable},
                                                 {0x0303, kLand},
                                                 {0x0500, kLand},
                                                 {0xFEFE, kLand | kPassable}}));

    WQDataFileComparison comparison(old->cellDataFile(), current->cellDataFile());
    comparison.buildComparison();
    const auto compared = WQWebLand::readLand(*current, &comparison);
    ASSERT_TRUE(compared);
    EXPECT_EQ(flagged(compared->blocks),
              (std::map<std::uint32_t, unsigned>{
                  {0x0001, kLand},
                  {0x0101, kLand | kObjects | kPassable | WQLandPoint::wasAdded},
                  {0x0303, kLand | WQLandPoint::wasChanged},
                  {0x0500, kLand},
                  {0x0505, WQLandPoint::wasRemoved},
                  {0xFEFE, kLand | kPassable}}));
}
