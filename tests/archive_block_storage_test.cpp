#include "tests/BlockFileBytes.h"
#include "tests/TestSupport.h"

#include "archive/ZPGorvaneBlockStorage.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

using Storage = ZPGorvaneBlockStorage;

std::unique_ptr<Storage> open(unsigned version, const std::filesystem::path &path,
                              ZPError *error = nullptr) {
    switch (version) {
    case 1: return Storage::initV1StorageWithFileAtPath(path, error);
    case 2: return Storage::initV2StorageWithFileAtPath(path, error);
    default: return Storage::initV3StorageWithFileAtPath(path, error);
    }
}

class BlockStorage : public testing::Test {
  protected:
    std::unique_ptr<Storage> openBytes(const BlockFileBytes &file, unsigned version = 3) {
        return open(version, file.writeToPath(_directory / "archive"));
    }

    TemporaryFolder _directory;
};

TEST_F(BlockStorage, EachVersionReadsItsHeaderAndRefusesTheOthers) {
    for (const unsigned version : {1u, 2u, 3u}) {
        BlockFileBytes file(4);
        file.rootOffset = 0x800;
        file.putHeader(version, 0x400, 0xC00, 2);
        const auto storage = openBytes(file, version);
        ASSERT_NE(storage, nullptr);
        EXPECT_EQ(storage->version(), version);
        EXPECT_EQ(storage->blockSize(), 1024u);
        EXPECT_EQ(storage->fileSize(), 4096u);
        EXPECT_EQ(storage->contentType(), 7u);
        EXPECT_EQ(storage->contentSubtype(), version == 1 ? 0u : 8u);
        EXPECT_EQ(storage->firstFreeBlock(), 0x400u);
        EXPECT_EQ(storage->lastFreeBlock(), 0xC00u);
        EXPECT_EQ(storage->freeSpace(), 2040u);
        EXPECT_EQ(storage->rootOffset(), 0x800u);
        const auto path = _directory / "archive";
        EXPECT_EQ(open(3, path) != nullptr, version == 3);
        EXPECT_EQ(open(1, path) != nullptr, version != 3);
    }
}

TEST_F(BlockStorage, HeadersThatAreRefused) {
    const struct {
        std::size_t offset;
        std::uint32_t word;
        std::size_t size;
        const char *line;
    } cases[] = {{256, 1, 4096, "Bad magic number for V3 storage (00000001 00005442)"},
                 {320, 9, 4096, "Bad magic number for V3 storage (004c5000 00000009)"},
                 {324, 0, 4096, "Block size 0"},
                 {324, 7, 4096, "Block size 7"},
                 {324, 4097, 4096, "Block size 4097"},
                 {0, 0, 355, "Trying to read past end"},
                 {0, 0, 100, "Trying to seek past end"},
                 {0, 0, 0, "Trying to seek past end"}};
    for (const auto &c : cases) {
        BlockFileBytes file(4);
        file.putHeader(3);
        file.put(c.offset, words({c.word}));
        file.bytes.resize(c.size);
        CapturedLog captured;
        EXPECT_EQ(openBytes(file), nullptr) << c.line;
        EXPECT_NE(captured.take().find(c.line), std::string::npos) << c.line;
    }
}

TEST_F(BlockStorage, FilesThatCannotBeOpened) {
    ZPError error;
    EXPECT_EQ(open(3, _directory / "missing", &error), nullptr);
    EXPECT_EQ(error.description().substr(0, 40), "Error Domain=POSIXErrorDomain Code=2 \"No");
    EXPECT_EQ(open(3, _directory.path(), &error), nullptr);
    EXPECT_EQ(error.code, EISDIR);

    BlockFileBytes file(4);
    file.putHeader(3);
    const auto path = file.writeToPath(_directory / "locked");
    const int descriptor = ::open(path.c_str(), O_RDONLY);
    ASSERT_EQ(flock(descriptor, LOCK_EX), 0);
    EXPECT_EQ(open(3, path, &error), nullptr);
    EXPECT_EQ(error.code, EWOULDBLOCK);
    close(descriptor);
    EXPECT_NE(open(3, path, &error), nullptr);
}

TEST_F(BlockStorage, AFileIsLockedForAsLongAsItIsOpen) {
    BlockFileBytes file(4);
    file.putHeader(3);
    const auto path = file.writeToPath(_directory / "archive");
    const int descriptor = ::open(path.c_str(), O_RDONLY);
    const auto isLocked = [descriptor] {
        const bool isTaken = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
        flock(descriptor, LOCK_UN);
        return !isTaken;
    };
    auto storage = open(3, path);
    ASSERT_NE(storage, nullptr);
    EXPECT_TRUE(isLocked());
    storage->close();
    EXPECT_FALSE(isLocked());
    EXPECT_EQ(storage->fileHandle(), nullptr);
    CapturedLog captured;
    ZPError error;
    EXPECT_FALSE(storage->readDataFromBlocksAtOffset(0x400, 1, &error));
    EXPECT_EQ(error.code, ZPGorvaneStorageErrorException);

    storage->setFileHandle(ZPFileHandle::fileHandleAtPath(path));
    EXPECT_TRUE(isLocked());
    EXPECT_TRUE(storage->readDataFromBlocksAtOffset(0x400, 1));
    storage.reset();
    EXPECT_FALSE(isLocked());
    // A header that is refused leaves no lock behind, nor does a directory opened as a file.
    EXPECT_EQ(open(1, path), nullptr);
    EXPECT_FALSE(isLocked());
    close(descriptor);
}

TEST_F(BlockStorage, ChainsAreJoinedCutAndCheckedForLength) {
    BlockFileBytes file(6, 256);
    ZPData data(300);
    for (std::size_t index = 0; index < data.size(); ++index)
        data[index] = static_cast<std::byte>(index * 7);
    file.put(0x200, words({0})); // the second block lies before the first
    file.putChain({0x400, 0x200}, data);
    file.putHeader(3);
    file.bytes.resize(0x480); // the last block of the file is cut to 124 payload bytes
    file.putChain({0x300}, hex("aa"));
    file.put(328, words({0x600}));
    const auto storage = openBytes(file);
    ASSERT_NE(storage, nullptr);

    // 124 bytes from the block that is cut, then 252 from the other.
    ZPData expected(data.begin(), data.begin() + 124);
    expected.insert(expected.end(), data.begin() + 252, data.end());
    EXPECT_EQ(storage->readDataFromBlocksAtOffset(0x400, 124 + 48), expected);
    EXPECT_TRUE(storage->readDataFromBlocksAtOffset(0x400, 124 + 252));
    EXPECT_EQ(storage->readDataFromBlocksAtOffset(0x300, 1), hex("aa"));
    EXPECT_EQ(storage->readDataFromBlocksAtOffset(0, 0), ZPData());

    for (const auto &[offset, length, reason] :
         {std::tuple{0x400u, 377u, "Data length (376) is shorter than expected (377)"},
          {0x300u, 0xFFFFFFFFu, "Data length (252) is shorter than expected (4294967295)"},
          {0u, 1u, "Data length (0) is shorter than expected (1)"}}) {
        ZPError error;
        EXPECT_FALSE(storage->readDataFromBlocksAtOffset(offset, length, &error));
        EXPECT_EQ(error.domain, kZPGorvaneStorageErrorDomain);
        EXPECT_EQ(error.code, ZPGorvaneStorageErrorTooShort);
        EXPECT_EQ(error.failureReason(), reason);
        EXPECT_EQ(error.userInfo.size(), 2u);
    }
}

TEST_F(BlockStorage, EveryFaultOfAChainHasItsCode) {
    BlockFileBytes file(16, 1024);
    file.put(0x400, words({0x800}));
    file.put(0x800, words({0x400}));       // back to the first
    file.put(0xC00, words({0x410}));       // off the boundary
    file.put(0x1000, words({0x4000}));     // at the end of the file
    file.put(0x1400, words({0x80000400})); // a free block's link
    file.put(0x1800, words({0x1C00}));
    file.put(0x1C00, words({0x2000}));
    file.put(0x2000, words({0x1C00})); // back to the second
    file.put(0x2400, words({0x3C00}));
    file.put(0x2800, words({0x2800})); // to itself
    file.putHeader(3);
    file.bytes.resize(0x3C02); // the last block's link is cut
    const auto sound = openBytes(file);
    ASSERT_NE(sound, nullptr);
    file.put(328, words({0xC0000000})); // a recorded size beyond 2 GiB
    const auto large = open(3, file.writeToPath(_directory / "large"));
    ASSERT_NE(large, nullptr);

    const std::string outside = " does not fall within data area of file (00000400 - 00004000)";
    const std::string boundary = " does not begin on a block boundary";
    const std::string exception = "Caught exception trying to read block";
    const std::string chain = "Block chain starting at 0000";
    const struct {
        const Storage &storage;
        std::uint32_t first, block;
        int code;
        std::string reason;
    } cases[] = {{*sound, 0x400, 0x400, 4, chain + "0400 contains loop to 00000400"},
                 {*sound, 0x1800, 0x1C00, 4, chain + "1800 contains loop to 00001c00"},
                 {*sound, 0x2800, 0x2800, 4, chain + "2800 contains loop to 00002800"},
                 {*sound, 0xC00, 0x410, 3, "Block offset 00000410" + boundary},
                 {*sound, 0x100, 0x100, 3, "Block offset 00000100" + boundary},
                 {*sound, 0x1000, 0x4000, 2, "Block offset 00004000" + outside},
                 {*sound, 0x1400, 0x80000400, 2, "Block offset 80000400" + outside},
                 {*large, 0x1400, 0x80000400, 1, chain + "1400 contains free block 80000400"},
                 {*sound, 0x2400, 0x3C00, 5, exception},
                 {*large, 0x4000, 0x4000, 5, exception}};
    CapturedLog captured;
    // A second time, for what was remembered of the first.
    for (std::size_t number = 0; number < 2 * std::size(cases); ++number) {
        const auto &c = cases[number % std::size(cases)];
        ZPError error;
        EXPECT_FALSE(c.storage.readDataFromBlocksAtOffset(c.first, 1, &error)) << c.reason;
        EXPECT_EQ(error.code, c.code) << c.reason;
        decltype(error.userInfo) details = {
            {NSLocalizedFailureReasonErrorKey, c.reason},
            {"ZPGorvaneStorageErrorKey_FirstBlockOffset", std::uint64_t{c.first}},
            {"ZPGorvaneStorageErrorKey_BlockOffset", std::uint64_t{c.block}}};
        if (c.code == 2) {
            details["ZPGorvaneStorageErrorKey_FirstValidBlockOffset"] = std::uint64_t{0x400};
            details["ZPGorvaneStorageErrorKey_LastValidBlockOffset"] = std::uint64_t{0x4000};
        }
        EXPECT_EQ(error.userInfo.erase("ZPGorvaneStorageErrorKey_Exception"),
                  c.code == 5 ? 1u : 0u);
        EXPECT_EQ(error.userInfo, details) << c.reason;
    }
    EXPECT_NE(captured.take().find(
                  "Caught exception: Trying to read past end in -[ZPDataCursor readLittleInt32] "
                  "(block 00003c00 of the chain starting at 00002400)\n"),
              std::string::npos);
}

TEST_F(BlockStorage, ChainsThatShareADamagedPartMeetTheSameFault) {
    // Three ways into a loop of three blocks, two into a rest that ends outside the file.
    BlockFileBytes file(16);
    for (const auto &[block, next] :
         std::initializer_list<std::pair<std::uint32_t, std::uint32_t>>{{1, 2},
                                                                        {2, 3},
                                                                        {3, 4},
                                                                        {4, 5},
                                                                        {5, 3},
                                                                        {6, 2},
                                                                        {7, 5},
                                                                        {8, 9},
                                                                        {9, 10},
                                                                        {10, 99},
                                                                        {11, 9},
                                                                        {12, 13},
                                                                        {13, 0}})
        file.put(block * 1024, words({next * 1024}));
    file.putHeader(3);
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {
        {1, 3}, {2, 3}, {6, 3}, {7, 5}, {4, 4}, {3, 3}, {8, 99}, {11, 99}, {10, 99}, {12, 0}};
    // Whatever is read first.
    for (std::size_t start = 0; start < std::size(cases); ++start) {
        const auto storage = openBytes(file);
        ASSERT_NE(storage, nullptr);
        for (std::size_t number = 0; number < std::size(cases); ++number) {
            const auto &[first, place] = cases[(start + number) % std::size(cases)];
            ZPError error;
            EXPECT_EQ(storage->readDataFromBlocksAtOffset(first * 1024, 1, &error).has_value(),
                      place == 0);
            if (place == 0)
                continue;
            EXPECT_EQ(error.userInfo["ZPGorvaneStorageErrorKey_BlockOffset"],
                      ZPError::Value(std::uint64_t{place} * 1024))
                << first << " after " << start;
        }
    }
}

TEST_F(BlockStorage, WhatIsKnownOfAFilesChainsEndsWithTheFile) {
    BlockFileBytes file(8);
    for (std::uint32_t block = 1; block < 5; ++block)
        file.put(block * 1024, words({block < 4 ? (block + 1) * 1024 : 1024}));
    file.putHeader(3);
    const auto storage = openBytes(file);
    EXPECT_FALSE(storage->readDataFromBlocksAtOffset(1024, 8));
    file.put(0x1000, words({0}));
    storage->setFileHandle(ZPFileHandle::fileHandleAtPath(file.writeToPath(_directory / "mended")));
    EXPECT_TRUE(storage->readDataFromBlocksAtOffset(1024, 8));
    // Or with the size that it is said to have.
    storage->setFileSize(0x1000);
    EXPECT_FALSE(storage->readDataFromBlocksAtOffset(1024, 8));
    storage->setFileSize(0x2000);
    EXPECT_TRUE(storage->readDataFromBlocksAtOffset(1024, 8));
}

TEST_F(BlockStorage, ChecksOfHeaderAndFreeBlocks) {
    const struct {
        std::uint32_t blockSize;
        std::uint32_t firstLink, secondLink;
        std::uint32_t lastFree, freeCount;
        bool isHeaderSound, isChainSound;
        const char *line;
    } cases[] = {
        {1024, 0x80000800, 0x80000000, 0x800, 2, true, true, "chain freeBlockCount: 2"},
        {512, 0x80000800, 0x80000000, 0x800, 2, false, true, "Unrecognized block size: 512"},
        {1024, 0x80000800, 0x80000400, 0x800, 2, true, false, "contains a loop"},
        {1024, 0x80100000, 0, 0x400, 1, true, false, "block 00100000 does not fall"},
        {1024, 0x80000801, 0, 0x400, 1, true, false, "block 00000801 does not begin"},
        {1024, 0x80000800, 0, 0x800, 2, true, false, "block 00000800 is not marked free"},
        {1024, 0x80000000, 0, 0x800, 1, true, false, "does not end at block recorded"},
        {1024, 0x80000800, 0x80000000, 0x800, 3, true, false, "(3) does not match actual"},
        // the last block of the file
        {1024, 0x800FFC00, 0, 0xFFC00, 2, true, true, "chain freeBlockCount: 2"},
        {256, 0x800FFF00, 0, 0xFFF00, 2, true, true, "chain freeBlockCount: 2"}};
    for (const auto &c : cases) {
        BlockFileBytes file(1024 * 1024 / c.blockSize, c.blockSize);
        file.put(0x400, words({c.firstLink}));
        file.put(0x800, words({c.secondLink}));
        file.put(file.bytes.size() - c.blockSize, words({0x80000000}));
        file.putHeader(3, 0x400, c.lastFree, c.freeCount);
        CapturedLog captured;
        const auto storage = openBytes(file);
        EXPECT_EQ(storage->checkHeader(), c.isHeaderSound) << c.line;
        EXPECT_EQ(storage->checkFreeBlockChain(), c.isChainSound) << c.line;
        EXPECT_EQ(storage->check(), c.isHeaderSound && c.isChainSound) << c.line;
        EXPECT_NE(captured.take().find(c.line), std::string::npos) << c.line;
    }

    BlockFileBytes file(8);
    for (const std::size_t offset : {0x800u, 0x400u, 0x1C00u}) // the last block is one of them
        file.put(offset, words({0x80000800}));
    file.putHeader(3);
    CapturedLog captured;
    openBytes(file)->searchForFirstFreeBlock();
    const std::string log = captured.take();
    EXPECT_NE(log.find("             free block count: 3\n"), std::string::npos) << log;
    EXPECT_NE(log.find("unreferenced free block count: 2\n"), std::string::npos) << log;
    EXPECT_LT(log.find("... 00000400"), log.find("... 00001c00"));
}

} // namespace
