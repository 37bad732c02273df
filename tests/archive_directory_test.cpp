#include "tests/BlockFileBytes.h"
#include "tests/TestSupport.h"

#include "archive/ZPGorvaneDataFile.h"
#include "archive/ZPGorvaneDirectory.h"
#include "game/WQArchiveFamilies.h"

#include <gtest/gtest.h>

namespace {

ZPData entry(std::uint32_t identifier) {
    return words({1, identifier, 0x400, 12, 1000, 77});
}

/// An archive whose nodes are given by a test; each takes two blocks.
class Directory : public testing::Test {
  protected:
    void putNode(std::uint32_t offset, const ZPData &bytes) {
        _file.putChain({offset, offset + 0x400}, bytes);
    }
    std::unique_ptr<ZPGorvaneDirectory> read(bool loadSubdirectories = true) {
        return readFamily(kWQArchiveFamily, 3, loadSubdirectories);
    }
    std::unique_ptr<ZPGorvaneDirectory> readFamily(const ZPGorvaneArchiveFamily &family,
                                                   unsigned version, bool loadSubdirectories) {
        _file.rootOffset = 0x800;
        _file.putHeader(version);
        _dataFile = std::make_unique<ZPGorvaneDataFile>(
            family, _file.writeToPath(_directory / std::to_string(version)));
        CapturedLog captured;
        auto root = ZPGorvaneDirectory::initWithDataFile(*_dataFile, 0x800, loadSubdirectories);
        _log = captured.take();
        return root;
    }
    std::vector<std::uint32_t> identifiers(const ZPGorvaneDirectory &root) {
        std::vector<std::uint32_t> found;
        root.enumerateDirectoriesUsingBlock([&](const ZPGorvaneDirectory &directory) {
            for (const auto &file : directory.files())
                found.push_back(file.identifier);
        });
        return found;
    }

    TemporaryFolder _directory;
    BlockFileBytes _file{16};
    std::unique_ptr<ZPGorvaneDataFile> _dataFile;
    std::string _log;
};

using Identifiers = std::vector<std::uint32_t>;

TEST_F(Directory, EntriesOfEachFamily) {
    const struct {
        const ZPGorvaneArchiveFamily &family;
        unsigned version;
        ZPData record, fields;
    } cases[] = {
        {kWQArchiveFamily, 3, words({2, 17, 0x400, 12, 99, 77}), words({2, 17, 0x400, 12, 99, 77})},
        {kWQRetailArchiveFamily, 1, words({17, 0x400, 12}), words({0, 17, 0x400, 12, 0, 0})},
        {kWQ2ArchiveFamily, 2, words({17, 0x400, 12, 99}), words({0, 17, 0x400, 12, 99, 0})}};
    for (const auto &c : cases) {
        _file = BlockFileBytes(16);
        putNode(0x800, nodeBytes({}, 1, c.record, c.family.directorySize()));
        const auto root = readFamily(c.family, c.version, true);
        ASSERT_NE(root, nullptr);
        EXPECT_TRUE(root->isLeaf());
        ASSERT_EQ(root->files().size(), 1u);
        ZPData written;
        WQWriteFileEntryToBuffer(root->files().front(), written);
        EXPECT_EQ(written, c.fields);
        EXPECT_EQ(root->files().front().copyWithZone().fileOffset, 0u);
        EXPECT_EQ(_log, "");
    }
}

TEST_F(Directory, TreeAndSearch) {
    // 0x800: 20, 40 with children 0x1000 (10), 0x1800 (30) and 0x2000 (50)
    putNode(0x800, nodeBytes(words({0x1000, 0x1800, 0x2000}), 2, joined({entry(20), entry(40)})));
    putNode(0x1000, nodeBytes({}, 1, entry(10)));
    putNode(0x1800, nodeBytes(words({0xCDCDCDCD}), 1, entry(30)));
    putNode(0x2000, nodeBytes({}, 1, entry(50)));
    const auto tree = read();
    EXPECT_EQ(identifiers(*tree), (Identifiers{20, 40, 10, 30, 50}));
    std::vector<ZPGorvaneFileEntry> entries(tree->entryCount());
    tree->copyEntriesFromLeftToRight(entries);
    EXPECT_TRUE(std::ranges::is_sorted(entries, {}, &ZPGorvaneFileEntry::identifier));
    EXPECT_EQ(entries.size(), 5u);
    EXPECT_EQ(_log, "");
    EXPECT_EQ(read(false)->subdirectoryOffsets(), (Identifiers{0x1000, 0x1800, 0x2000}));

    for (const std::uint32_t wanted : {10u, 20u, 30u, 40u, 50u, 5u, 35u, 60u}) {
        const auto found =
            ZPGorvaneDirectory::searchForFileWithIdentifier(wanted, *_dataFile, 0x800);
        EXPECT_EQ(found.has_value(), wanted % 10 == 0 && wanted < 60) << wanted;
        EXPECT_TRUE(!found || found->identifier == wanted);
    }
}

TEST_F(Directory, FaultsOfANodeAreLoggedAndTolerated) {
    ZPData full;
    for (std::uint32_t identifier = 1; identifier <= 62; ++identifier)
        full = joined({full, entry(identifier)});
    const ZPData five = entry(5), emptySlot(24);
    const struct {
        ZPData root;
        std::size_t fileCount;
        const char *line;
    } cases[] = {
        {nodeBytes({}, 61, full), 61, ""},
        {nodeBytes({}, 62, full), 62, "invalid number of files (62), must be count <= 61"},
        {nodeBytes({}, 3, joined({five, emptySlot, five})), 1, "> Failed to create file entry 1"},
        {nodeBytes({}, 2, joined({five, five})), 2,
         "dir 00000800> files out of order, prev id (00000005) >= cur id (00000005)"},
        {nodeBytes(words({0x1001}), 1, five), 1, "> Subdirectory at index 0 failed checks..."},
        {nodeBytes(words({0x4000}), 1, five), 1, "Block offset 00004000 does not fall within"},
        {nodeBytes(words({0x1000}), 1, five), 2, "dir 00000800> count: 1, subdirs: 1, files: 1"},
        // to itself, twice to one node, and to a node that leads back here
        {nodeBytes(words({0x800, 0x1000}), 1, five), 2, "Subdirectory 00000800 was read already"},
        {nodeBytes(words({0x1000, 0x1000}), 1, five), 2, "Subdirectory 00001000 was read already"},
        {nodeBytes(words({0x1800, 0x1000}), 1, five), 3,
         "dir 00001800> Subdirectory 00000800 was read"},
        // a child whose entries pass its end
        {nodeBytes(words({0x2000, 0x1000}), 1, five), 64, "dir 00002000> Caught exception"}};
    for (const auto &c : cases) {
        _file = BlockFileBytes(16);
        putNode(0x800, c.root);
        putNode(0x1000, nodeBytes({}, 1, entry(9)));
        putNode(0x1800, nodeBytes(words({0x800}), 1, entry(3)));
        putNode(0x2000, nodeBytes({}, 0xFFFFFFFF, full));
        const auto root = read();
        ASSERT_NE(root, nullptr) << c.line;
        EXPECT_EQ(identifiers(*root).size(), c.fileCount) << c.line;
        EXPECT_NE(_log.find(c.line), std::string::npos) << c.line << "\n" << _log;
        EXPECT_EQ(_log.empty(), *c.line == '\0') << _log;
    }

    // What is wrong with a child is said before what is wrong with the link after it.
    _file = BlockFileBytes(16);
    putNode(0x800, nodeBytes(words({0x1800, 0x1001}), 1, five));
    putNode(0x1800, nodeBytes(words({0x800}), 1, entry(3)));
    read();
    EXPECT_LT(_log.find("dir 00001800> Subdirectory 00000800 was read"),
              _log.find("dir 00000800> Subdirectory at index 1 failed"));

    // The search ends in a directory that leads back to itself.
    _file = BlockFileBytes(16);
    putNode(0x800, nodeBytes(words({0x800, 0x800}), 1, entry(5)));
    read();
    EXPECT_FALSE(ZPGorvaneDirectory::searchForFileWithIdentifier(9, *_dataFile, 0x800));
    // A hostile count in the root is the caller's to catch.
    putNode(0x800, nodeBytes({}, 63, full));
    EXPECT_THROW(read(), ZPRangeException);
    // Who wants the index gets what there is.
    CapturedLog captured;
    _dataFile->loadFileEntriesIfNecessary();
    EXPECT_EQ(countOf(captured.take(), "dir 00000800> Caught exception"), 1u);
    ASSERT_NE(_dataFile->rootDirectory(), nullptr);
    EXPECT_EQ(identifiers(*_dataFile->rootDirectory()).size(), 62u);
}

TEST_F(Directory, IsFollowedThirtyTwoLevelsDown) {
    constexpr std::uint32_t kLevels = 33;
    _file = BlockFileBytes(2 * (kLevels + 1));
    for (std::uint32_t level = 1; level <= kLevels; ++level)
        putNode(level * 0x800,
                nodeBytes(words({level < kLevels ? (level + 1) * 0x800 : 0}), 1, entry(level)));
    EXPECT_EQ(identifiers(*read()).size(), 32u);
    EXPECT_NE(_log.find("dir 00010000> Subdirectory 00010800 lies deeper than 32 levels"),
              std::string::npos)
        << _log;
    EXPECT_TRUE(ZPGorvaneDirectory::searchForFileWithIdentifier(1, *_dataFile, 0x800));
}

TEST_F(Directory, ChildrenThatACountLeavesOutAreNamed) {
    const struct {
        ZPData children;
        std::uint32_t count;
        const char *line;
    } cases[] = {
        {words({0x1000, 0x1800, 0x2000}), 1, "subdirectory 00002000 follows"},
        // Left there by a larger node: read elsewhere, free, no node, off the boundary, outside.
        {words({0x1000, 0x1800, 0x1000}), 1, nullptr},
        {words({0x1000, 0x1800, 0x2800}), 1, nullptr},
        {words({0x1000, 0x1800, 0x3000}), 1, nullptr},
        {words({0x1000, 0x1800, 0x2001}), 1, nullptr},
        {words({0x1000, 0x1800, 0x4000}), 1, nullptr},
        {words({0x1000, 0x1800, 0, 0x2000}), 1, nullptr}};
    for (const auto &c : cases) {
        _file = BlockFileBytes(16);
        putNode(0x800, nodeBytes(c.children, c.count, joined({entry(20), entry(40)})));
        putNode(0x1000, nodeBytes({}, 1, entry(10)));
        putNode(0x1800, nodeBytes({}, 1, entry(30)));
        putNode(0x2000, nodeBytes({}, 1, entry(50)));
        _file.put(0x2800, words({0x80000000}));
        putNode(0x3000, ZPData(1740, std::byte{7}));
        EXPECT_EQ(identifiers(*read()), (Identifiers{20, 10, 30}));
        EXPECT_EQ(countOf(_log, "\n"), c.line != nullptr ? 1u : 0u) << _log;
        EXPECT_EQ(countOf(_log, c.line != nullptr ? c.line : "follows"),
                  c.line != nullptr ? 1u : 0u);
    }
    // Beside another fault, too.
    _file = BlockFileBytes(16);
    putNode(0x800, nodeBytes(words({0x1000, 0x1800, 0x2000}), 1, entry(20)));
    putNode(0x1000, nodeBytes({}, 2, joined({entry(10), entry(5)})));
    putNode(0x1800, nodeBytes({}, 1, entry(30)));
    putNode(0x2000, nodeBytes({}, 1, entry(50)));
    read();
    EXPECT_EQ(countOf(_log, "subdirectory 00002000 follows"), 1u) << _log;
    EXPECT_EQ(countOf(_log, "files out of order"), 1u) << _log;
}

TEST_F(Directory, DescriptionsNameTheClassesOfTheFamily) {
    const struct {
        const ZPGorvaneArchiveFamily &family;
        unsigned version;
        const char *directory, *entry;
    } cases[] = {{kWQArchiveFamily, 3, "<WQDirectory: 0x", "<WQFileEntry:0x"},
                 {kWQRetailArchiveFamily, 1, "<WQRetailDirectory: 0x", "<WQRetailFileEntry:0x"},
                 {kWQ2ArchiveFamily, 2, "<WQ2Directory: 0x", "<WQ2FileEntry:0x"}};
    for (const auto &c : cases) {
        _file = BlockFileBytes(16);
        putNode(0x800, nodeBytes({}, 1, entry(5), c.family.directorySize()));
        const auto root = readFamily(c.family, c.version, true);
        ASSERT_NE(root, nullptr);
        EXPECT_TRUE(root->description().starts_with(c.directory)) << root->description();
        // The time is the archive's, not that of the place where it is read.
        setenv("TZ", "XXX-5", 1);
        tzset();
        const auto text = root->files().front().description(c.family.fileEntryClassName);
        unsetenv("TZ");
        tzset();
        EXPECT_TRUE(text.starts_with(c.entry)) << text;
        EXPECT_EQ(countOf(text, ", mtime: 1970-01-01 00:"), 1u) << text;
    }
}

} // namespace
