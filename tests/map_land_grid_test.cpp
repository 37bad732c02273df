// The land grid against points reckoned one by one: which block has a point, and what it says.

#include "game/WQLandBlock.h"
#include "io/ZPParallel.h"
#include "io/ZPSystemLog.h"
#include "map/land/WQLandGridBuilder.h"
#include "tests/ArchiveBytes.h"
#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace {

constexpr unsigned kLast = 254;

struct Block {
    unsigned column, row;

    std::uint32_t identifier() const { return column << 24 | row << 16 | 0xFFFF; }
    bool hasObjects() const { return (column + row) % 3 == 0; }
    /// All water for some blocks, anything for the others.
    bool isSea() const { return column % 5 == 0; }
    std::uint16_t word(unsigned x, unsigned y) const {
        return static_cast<std::uint16_t>(isSea() ? 0x4C : column * 2801 + row * 97 + x * 13 + y);
    }
    std::uint8_t height(unsigned x, unsigned y) const {
        return static_cast<std::uint8_t>(column * 41 + row * 7 + x * 9 + y);
    }
    ZPData record() const {
        ZPData bytes = words({identifier(), hasObjects() ? 1u : 3u});
        for (unsigned x = 0; x < 9; ++x)
            for (unsigned y = 0; y < 9; ++y)
                ZPAppendLittleInt16(bytes, word(x, y));
        for (unsigned x = 0; x < 9; ++x)
            for (unsigned y = 0; y < 9; ++y)
                bytes.push_back(static_cast<std::byte>(height(x, y)));
        bytes.push_back({});
        return bytes;
    }
};

class LandGrid : public testing::Test {
  protected:
    /// The archive's file of a block, some of its bytes or more than all.
    void add(const Block &block, std::size_t size = 252) {
        ZPData record = block.record();
        record.resize(size);
        _archive.addFile(block.identifier(), record);
    }
    std::unique_ptr<WQDataFile> dataFile() {
        std::filesystem::remove(_folder / "cell"); // an older one may still be open
        _archive.writeToPath(_folder / "cell");
        auto file = std::make_unique<WQDataFile>(_folder / "cell");
        file->setType(WQDataFile::cell);
        file->loadFileEntriesIfNecessary();
        return file;
    }
    WQLandCounts fill(const WQDataFileComparison *comparison = nullptr) {
        const auto file = dataFile();
        CapturedLog captured;
        const WQLandCounts counts = WQFillLandGrid(*_grid, *file, comparison);
        _log = captured.take();
        return counts;
    }
    bool logSays(const std::string &text) const { return _log.find(text) != std::string::npos; }

    TemporaryFolder _folder;
    ArchiveBytes _archive;
    std::unique_ptr<WQLandGrid> _grid = WQLandGrid::allocate();
    std::string _log;
};

TEST_F(LandGrid, EveryPointIsThatOfTheLastBlockWithIt) {
    // Blocks with and without neighbours on all sides, at the edges of the world and beyond.
    std::set<std::pair<unsigned, unsigned>> blocks;
    for (const unsigned column :
         {0u, 1u, 14u, 15u, 16u, 17u, 31u, 32u, 100u, 239u, 240u, 253u, 254u, 255u})
        for (const unsigned row : {0u, 1u, 2u, 77u, 78u, 79u, 252u, 253u, 254u, 255u})
            if ((column * 7 + row * row * 5) % 11 > 3)
                blocks.insert({column, row});
    blocks.erase({14, kLast});
    blocks.insert({{14, 255}, {15, kLast}, {16, kLast}, {255, 3}, {255, 255}});
    unsigned objectBlocks = 0;
    for (const auto &[column, row] : blocks) {
        const Block block{column, row};
        add(block);
        objectBlocks += row % 2;
        if (row % 2 == 1)
            _archive.addFile(block.identifier() - 1, "objects");
        _archive.addFile(block.identifier() - 0xFF00, "a dungeon cell");
    }
    _archive.addFile(0xFFFF0001, "version");
    const WQLandCounts counts = fill();
    EXPECT_EQ(counts.landBlocks, blocks.size());
    EXPECT_EQ(counts.objectBlocks, objectBlocks);
    EXPECT_TRUE(logSays("Land block 0effffff is left out: it lies outside the world"));

    std::size_t wrong = 0;
    for (unsigned y = 0; y < 2041; ++y)
        for (unsigned x = 0; x < 2041; ++x) {
            WQLandPoint expected;
            // To the north and east first: their identifiers are greater.
            for (const auto &[column, row] : {std::pair{x / 8, y / 8},
                                              {x / 8, y / 8 - 1},
                                              {x / 8 - 1, y / 8},
                                              {x / 8 - 1, y / 8 - 1}}) {
                const unsigned inX = x - column * 8, inY = y - row * 8;
                if (column > kLast || row > kLast || inX > 8 || inY > 8 ||
                    !blocks.contains({column, row}))
                    continue;
                const Block block{column, row};
                expected = {
                    block.word(inX, inY), block.height(inX, inY),
                    static_cast<std::uint8_t>(1 + 2 * block.hasObjects() + 4 * !block.isSea())};
                break;
            }
            const WQLandPoint &point = _grid->at(x, y);
            wrong += point.terrainWord != expected.terrainWord ||
                     point.heightIndex != expected.heightIndex || point.flags != expected.flags;
        }
    EXPECT_EQ(wrong, 0u);
}

TEST_F(LandGrid, BlocksThatAreNotAsTheyShouldBe) {
    const Block good{3, 3}, tooShort{10, 3}, longer{20, 3}, huge{30, 3}, other{40, 3};
    add(good);
    add(tooShort, 251);
    add(longer, 300);
    add(huge, 200'000);
    _archive.addFile(Block{50, 3}.identifier(), other.record());
    EXPECT_EQ(fill().landBlocks, 5u);
    const auto isThere = [this](unsigned column) {
        return _grid->at(column * 8 + 4, 28).has(WQLandPoint::hasData);
    };
    EXPECT_TRUE(isThere(3));
    EXPECT_FALSE(isThere(10));
    EXPECT_TRUE(logSays("Land block 0a03ffff is left out: "));
    EXPECT_TRUE(isThere(20));
    EXPECT_TRUE(logSays("[1403ffff] Warning: 48 bytes left"));
    EXPECT_FALSE(isThere(30));
    EXPECT_TRUE(logSays(
        "Land block 1e03ffff is left out: it claims 200000 bytes, where a land block has 252"));
    // Drawn where its entry says, not where its own identifier does.
    EXPECT_TRUE(isThere(50));
    EXPECT_FALSE(isThere(40));
    EXPECT_TRUE(logSays("Land block 3203ffff says of itself that it is 2803ffff"));
}

TEST_F(LandGrid, FaultsAreSaidInTheOrderOfTheBlocks) {
    // Several in each strip of columns, each kind of fault among them.
    std::vector<std::string> expected;
    for (unsigned column = 0; column < 256; column += 3)
        for (const unsigned row : {7u, 8u, 200u}) {
            const Block block{column, row};
            const std::string name = ZPFormat("%08x", block.identifier());
            if (row == 7) {
                add(block, 300);
                expected.push_back("[" + name + "] Warning: 48 bytes left");
                if (column == 255)
                    expected.push_back("Land block " + name + " is left out: ");
            } else if (row == 8) {
                add(block, 100'000);
                expected.push_back("Land block " + name + " is left out: ");
            } else {
                add(block, 251);
                expected.push_back("Caught exception: ");
                expected.push_back("Land block " + name + " is left out: ");
            }
        }
    for (const unsigned threads : {1u, 2u, 7u})
        for (int repeat = 0; repeat < 5; ++repeat) {
            ZPWithThreads(threads, [this] { fill(); });
            std::istringstream lines(_log);
            std::size_t count = 0;
            for (std::string line; std::getline(lines, line); ++count) {
                ASSERT_LT(count, expected.size()) << line;
                ASSERT_EQ(line.find(expected[count]), line.find("] ") + 2) << threads << line;
            }
            ASSERT_EQ(count, expected.size());
        }
}

TEST_F(LandGrid, ChangesSinceAnOlderArchive) {
    for (const unsigned column : {1u, 3u, 5u})
        add({column, 1});
    const auto older = dataFile();
    _archive = ArchiveBytes();
    add({1, 1});
    add({5, 1}, 253);
    add({7, 1});
    _archive.addFile(0x01010100, "a new dungeon cell");
    const auto newer = dataFile();
    WQDataFileComparison comparison(older.get(), newer.get());
    comparison.buildComparison();
    fill(&comparison);
    const auto changes = [this](unsigned column) {
        return _grid->at(column * 8 + 4, 12).flags >> 3;
    };
    EXPECT_EQ(changes(1), 1); // added
    EXPECT_EQ(changes(3), 0); // gone with its land
    EXPECT_EQ(changes(5), 4); // changed
    EXPECT_EQ(changes(7), 1);
}

} // namespace
