#include "tests/ArchiveBytes.h"
#include "tests/BlockFileBytes.h"
#include "tests/TestSupport.h"

#include "game/WQArchiveFamilies.h"
#include "game/WQDataFile.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(DataFile, IndexOfAWholeTreeIsBuiltOnce) {
    const TemporaryFolder directory;
    ArchiveBytes archive;
    for (std::uint32_t number = 0; number < 5000; ++number)
        archive.addEntry(0x01000000 + number * 7919, {});
    archive.addFile(0xFFFF0001, hex("72050000"));
    archive.addFile(0x0A000001, "sound");
    archive.writeToPath(directory / "archive");

    WQDataFile dataFile(directory / "archive");
    dataFile.quickLoadDataVersion();
    ASSERT_NE(dataFile.dataVersion(), nullptr);
    EXPECT_EQ(dataFile.dataVersion()->version(), 1394u);
    EXPECT_FALSE(dataFile.hasLoadedFileEntries());
    EXPECT_EQ(dataFile.fileCount(), 0u);

    CapturedLog captured;
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back(
                [&] { std::ignore = dataFile.fileEntryWithIdentifier(0x0A000001); });
    }
    EXPECT_EQ(countOf(captured.take(), "Loading file entries - <WQDataFile"), 1u);
    EXPECT_EQ(dataFile.fileCount(), 5002u);
    EXPECT_EQ(dataFile.usedFileTypes(), (std::vector<std::uint8_t>{0x01, 0x02, 0x03, 0x0A, 0xFF}));
    EXPECT_EQ(dataFile.fileEntriesByType(0x0A).size(), 1u);
    EXPECT_EQ(dataFile.fileEntryWithIdentifier(0x0A000002), nullptr);
    ASSERT_NE(dataFile.fileEntryWithIdentifier(0x0A000001), nullptr);
    EXPECT_EQ(dataFile.readDataForFileEntry(*dataFile.fileEntryWithIdentifier(0x0A000001)),
              hex("736f756e64"));
}

TEST(DataFile, OfEntriesWithOneIdentifierTheLastVisitedCounts) {
    const TemporaryFolder directory;
    BlockFileBytes file(6);
    const auto node = [](const ZPData &children, const ZPData &entries) {
        ZPData bytes = children;
        bytes.resize(248);
        bytes = joined({bytes, words({2}), entries});
        bytes.resize(1740);
        return bytes;
    };
    file.putChain({0x400, 0x800},
                  node(words({0xC00}), joined({words({1, 0x12340100, 1, 1, 0, 0}),
                                               words({1, 0x12340200, 2, 2, 0, 0})})));
    file.putChain({0xC00, 0x1000}, node({}, joined({words({1, 0x12340100, 3, 3, 0, 0}),
                                                    words({1, 0xFFFF0002, 4, 4, 0, 0})})));
    file.rootOffset = 0x400;
    file.putHeader(3);
    WQDataFile dataFile(file.writeToPath(directory / "archive"));
    dataFile.setType(WQDataFile::cell);
    dataFile.loadFileEntriesIfNecessary();
    EXPECT_EQ(dataFile.fileCount(), 3u);
    EXPECT_EQ(dataFile.fileEntryWithIdentifier(0x12340100)->fileOffset, 3u);
    // The groups keep them all, in the order of the visit.
    const auto group = dataFile.fileEntriesByLandBlock(0x1234);
    ASSERT_EQ(group.size(), 3u);
    EXPECT_EQ(group[0].fileOffset, 1u);
    EXPECT_EQ(group[1].fileOffset, 3u);
    EXPECT_EQ(dataFile.fileEntriesByType(0x12).size(), 3u);
    EXPECT_TRUE(dataFile.fileEntriesByLandBlock(0xFFFF).empty());
    dataFile.setType(WQDataFile::portal);
    EXPECT_TRUE(dataFile.fileEntriesByLandBlock(0x1234).empty());
}

TEST(DataFile, OfManyEntriesWithOneIdentifierTheLastVisitedCounts) {
    // Root and child full of the same identifiers: more of them than a sort keeps in order by
    // chance.
    const TemporaryFolder directory;
    BlockFileBytes file(6);
    constexpr std::uint32_t kCount = 61;
    const auto node = [](const ZPData &children, std::uint32_t firstOffset) {
        ZPData bytes = children;
        bytes.resize(248);
        bytes = joined({bytes, words({kCount})});
        for (std::uint32_t index = 0; index < kCount; ++index)
            bytes =
                joined({bytes, words({1, 0x12340100 + index % 3, firstOffset + index, 4, 0, 0})});
        bytes.resize(1740);
        return bytes;
    };
    file.putChain({0x400, 0x800}, node(words({0xC00}), 1));
    file.putChain({0xC00, 0x1000}, node({}, kCount + 1));
    file.rootOffset = 0x400;
    file.putHeader(3);
    WQDataFile dataFile(file.writeToPath(directory / "archive"));
    dataFile.setType(WQDataFile::cell);
    CapturedLog captured;
    dataFile.loadFileEntriesIfNecessary();
    EXPECT_EQ(dataFile.fileCount(), 3u);
    for (std::uint32_t number = 0; number < 3; ++number) {
        // Of a child's 61 entries, 0 to 60, the last with each remainder.
        const std::uint32_t last = number == 0 ? 60 : number == 1 ? 58 : 59;
        const auto *entry = dataFile.fileEntryWithIdentifier(0x12340100 + number);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->fileOffset, kCount + 1 + last);
    }
    const auto group = dataFile.fileEntriesByLandBlock(0x1234);
    EXPECT_EQ(group.size(), 2 * kCount);
    EXPECT_TRUE(std::ranges::is_sorted(group, {}, [](const ZPGorvaneFileEntry &entry) {
        return std::pair(entry.identifier, entry.fileOffset);
    }));
}

TEST(DataFile, AnArchiveThatWasCutShortIsSaidAtOpening) {
    const TemporaryFolder directory;
    ArchiveBytes archive;
    archive.addEntries(200);
    archive.writeToPath(directory / "archive");
    const auto size = std::filesystem::file_size(directory / "archive");
    for (const std::uintmax_t length : {size, size - 1, size - 2048}) {
        std::filesystem::resize_file(directory / "archive", length);
        CapturedLog captured;
        WQDataFile dataFile(directory / "archive");
        EXPECT_EQ(countOf(captured.take(), "Error: " + (directory / "archive").string() +
                                               " holds " + std::to_string(length) + " bytes, but " +
                                               std::to_string(size) +
                                               " by its header: it was cut short\n"),
                  length < size ? 1u : 0u);
        // A node that cannot be read is logged at each load, and is one fault nevertheless.
        dataFile.quickLoadDataVersion();
        dataFile.loadFileEntriesIfNecessary();
        const std::string log = captured.take();
        const auto unreadable = length == size - 2048 ? 1u : 0u;
        EXPECT_EQ(countOf(log, "Error: "), 2 * unreadable) << log;
        EXPECT_EQ(countOf(log, "Caught exception: "), 2 * unreadable) << log;
        EXPECT_EQ(countOf(log, " of archive)"), 2 * unreadable) << log;
        EXPECT_EQ(dataFile.findings().count(), (length < size) + unreadable);
        EXPECT_EQ(dataFile.mayHaveLost(7), unreadable == 1);
    }
}

TEST(DataFile, VersionRecordThatEndsTooEarly) {
    const TemporaryFolder directory;
    ArchiveBytes archive;
    archive.addFile(0xFFFF0001, hex("7205"));
    archive.writeToPath(directory / "archive");
    WQDataFile dataFile(directory / "archive");
    CapturedLog captured;
    dataFile.quickLoadDataVersion();
    EXPECT_EQ(countOf(captured.take(),
                      "Bummer, caught exception trying to quick load the data version: Trying to "
                      "read past end in -[ZPDataCursor readLittleInt32]\n"),
              1u);
    EXPECT_EQ(dataFile.dataVersion(), nullptr);

    // Whatever a family's decoder throws.
    ZPGorvaneArchiveFamily family = kWQArchiveFamily;
    family.newVersion = [](std::span<const std::byte>,
                           ZPGorvaneClientData *) -> std::unique_ptr<ZPGorvaneVersion> {
        throw ZPGenericException("odd");
    };
    ZPGorvaneDataFile odd(family, directory / "archive");
    odd.quickLoadDataVersion();
    EXPECT_EQ(countOf(captured.take(), "load the data version: odd\n"), 1u);
    ASSERT_EQ(odd.findings().count(), 1u);
    EXPECT_EQ(odd.findings().kept().front().text(), "ffff0001: odd");
}

TEST(DataFile, OfAStorageHasItsFiles) {
    const TemporaryFolder folder;
    ArchiveBytes archive;
    archive.addFile(0x01000000, words({5}));
    archive.addEntry(0xFFFF0001, {0x404, 4, 0, 1}); // nowhere
    archive.writeToPath(folder / "archive");
    auto storage = ZPGorvaneBlockStorage::initV3StorageWithFileAtPath(folder / "archive");
    ASSERT_NE(storage, nullptr);
    EXPECT_TRUE(storage->description().ends_with(
        "> version: 3, blockSize:  256, firstFreeBlock: 00000000, lastFreeBlock: 00000000, "
        "rootOffset: 00000300"))
        << storage->description();
    WQDataFile dataFile(std::move(storage));
    CapturedLog captured;
    dataFile.quickLoadDataVersion();
    EXPECT_NE(captured.take().find("Error loading data version: Error Domain="), std::string::npos);
    EXPECT_TRUE(dataFile.description().ends_with(", (null)")) << dataFile.description();
    EXPECT_EQ(dataFile.dataVersion(), nullptr);
    dataFile.loadFileEntriesIfNecessary();
    ASSERT_NE(dataFile.fileEntryWithIdentifier(0x01000000), nullptr);
    EXPECT_EQ(dataFile.readDataForFileEntry(*dataFile.fileEntryWithIdentifier(0x01000000)),
              words({5}));
}

TEST(DataFile, WithoutStorageOrRootThereIsNothingAndNoFailure) {
    const TemporaryFolder directory;
    BlockFileBytes file(2);
    file.rootOffset = 0x400; // one block, too short for a node
    file.putHeader(3);
    for (const char *name : {"unreadable root", "missing"}) {
        if (name != std::string("missing"))
            file.writeToPath(directory / name);
        CapturedLog captured;
        WQDataFile dataFile(directory / name);
        dataFile.quickLoadDataVersion();
        EXPECT_EQ(dataFile.fileEntryWithIdentifier(1), nullptr);
        EXPECT_TRUE(dataFile.hasLoadedFileEntries());
        EXPECT_EQ(dataFile.fileCount(), 0u);
        EXPECT_EQ(dataFile.dataVersion(), nullptr);
        ZPError error;
        EXPECT_FALSE(dataFile.readDataForFileEntry({1, 2, 0x404, 4, 0, 0}, &error));
        EXPECT_NE(error.domain, "");
        ZPData scratch;
        EXPECT_FALSE(dataFile.readBytesForFileEntry({1, 2, 0x404, 4, 0, 0}, scratch, &error));
        EXPECT_NE(error.code, 0);
        EXPECT_TRUE(dataFile.check());
        const bool isOpen = dataFile.blockStorage() != nullptr;
        EXPECT_EQ(countOf(captured.take(), "rror: "), isOpen ? 2u : 1u);
        EXPECT_EQ(dataFile.findings().count(), isOpen ? 2u : 0u); // the root, and the file
    }
}

} // namespace
