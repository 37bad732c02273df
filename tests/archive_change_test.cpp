// Archives whose file another program changes while it is open.

#include "tests/ArchiveBytes.h"
#include "tests/BlockFileBytes.h"
#include "tests/TestSupport.h"

#include "game/WQDataFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace {

/// Files that fill one page each, after a header of one page.
constexpr std::uint32_t kPage = 4096, kFiles = 64;

ZPData contentsOfFile(std::uint32_t number) {
    return ZPData(kPage - 4, static_cast<std::byte>(number));
}

std::filesystem::path writePages(const std::filesystem::path &path) {
    BlockFileBytes file(kFiles + 1, kPage);
    for (std::uint32_t number = 1; number <= kFiles; ++number)
        file.putChain({number * kPage}, contentsOfFile(number));
    file.putHeader(3);
    return file.writeToPath(path);
}

std::optional<ZPData> readPage(const WQDataFile &dataFile, std::uint32_t number,
                               ZPError *error = nullptr) {
    return dataFile.readDataForFileEntry({1, number, number * kPage, kPage - 4, 0, 0}, error);
}

/// Cut within a page, where the system fills up the page, and at the end of one, where it does not.
class ShrinkingArchive : public testing::TestWithParam<std::uint32_t> {};

INSTANTIATE_TEST_SUITE_P(, ShrinkingArchive, testing::Values(0, 100));

TEST_P(ShrinkingArchive, WhatItLosesFailsAndTheRestIsRead) {
    const TemporaryFolder folder;
    const auto path = writePages(folder / "archive");
    const auto storage = ZPGorvaneBlockStorage::initV3StorageWithFileAtPath(path);
    ASSERT_NE(storage, nullptr);
    const WQDataFile dataFile(path);
    ZPData scratch;
    const auto lost =
        storage->readBytesFromBlocksAtOffset(kFiles * kPage, kPage - 4, scratch).value();
    ASSERT_EQ(lost.back(), std::byte{kFiles});

    std::filesystem::resize_file(path, 10 * kPage + GetParam());
    CapturedLog captured;
    for (const std::uint32_t number : {kFiles, 1u, 9u, 11u, 10u, kFiles}) {
        ZPError error;
        const auto data = readPage(dataFile, number, &error);
        if (number < 10) {
            EXPECT_EQ(data, contentsOfFile(number)) << number;
        } else {
            EXPECT_FALSE(data) << number;
            EXPECT_EQ(error.code, number == 10 && GetParam() > 0 ? ZPGorvaneStorageErrorTooShort
                                                                 : ZPGorvaneStorageErrorException);
        }
    }
    dataFile.didReadAllFiles();
    dataFile.didReadAllFiles();
    EXPECT_FALSE(readPage(dataFile, kFiles - 1));
    EXPECT_EQ(readPage(dataFile, 2), contentsOfFile(2));
    const std::string log = captured.take();
    EXPECT_EQ(countOf(log, "Error: " + path.string() + " lost " +
                               std::to_string(225280 - GetParam()) +
                               " of its 266240 bytes while it was read\n"),
              1u)
        << log;
    // Bytes that were given out before may still be looked at.
    EXPECT_EQ(lost.back(), std::byte{0});
    // Later mappings are none the worse.
    const WQDataFile other(writePages(folder / "other"));
    EXPECT_EQ(readPage(other, kFiles), contentsOfFile(kFiles));
}

TEST(ChangingArchive, AnIndexThatIsLostIsSaidOnce) {
    const TemporaryFolder folder;
    ArchiveBytes archive;
    archive.addEntries(5000);
    archive.writeToPath(folder / "archive");
    CapturedLog captured;
    WQDataFile dataFile(folder / "archive");
    std::filesystem::resize_file(folder / "archive", 100'000);
    EXPECT_EQ(dataFile.fileEntryWithIdentifier(1), nullptr);
    dataFile.didReadAllFiles();
    const std::string log = captured.take();
    EXPECT_EQ(countOf(log, " bytes while it was read\n"), 1u) << log;
    EXPECT_EQ(countOf(log, "rror: "), 2u) << log; // of the root, and this
}

TEST(ChangingArchive, ABusErrorElsewhereStillEndsTheProgram) {
    const TemporaryFolder folder;
    const WQDataFile dataFile(writePages(folder / "archive"));
    const int descriptor = open(writePages(folder / "mapped").c_str(), O_RDWR);
    const auto *bytes = static_cast<const volatile char *>(
        mmap(nullptr, 2 * kPage, PROT_READ, MAP_SHARED, descriptor, 0));
    ASSERT_EQ(ftruncate(descriptor, kPage), 0);
    // By the signal, or by what a sanitizer makes of it.
    const auto hasFailed = [](int status) { return status != 0; };
    EXPECT_EXIT(std::exit(bytes[kPage] == 0 ? 0 : 1), hasFailed, "");
    EXPECT_EXIT(raise(SIGBUS), hasFailed, "");
    close(descriptor);
}

TEST(ChangingArchive, LinksThatChangeMeanwhileGiveTheFilesLengthOrAnError) {
    const TemporaryFolder folder;
    constexpr std::uint32_t kBlocks = 200, kLink = 100 * 1024;
    BlockFileBytes file(kBlocks + 1);
    for (std::uint32_t block = 1; block <= kBlocks; ++block)
        file.put(block * 1024, words({block < kBlocks ? (block + 1) * 1024 : 0, block}));
    file.putHeader(3);
    const auto path = file.writeToPath(folder / "archive");
    const auto sound =
        ZPGorvaneBlockStorage::initV3StorageWithFileAtPath(path)->readDataFromBlocksAtOffset(
            1024, kBlocks * 1020);
    ASSERT_TRUE(sound);

    // A loop, the end, a place off the boundary, one outside, and one far behind the file.
    constexpr std::uint32_t kLinks[] = {1024, 0, 1025, (kBlocks + 1) * 1024, 0xFFFFFC00};
    std::jthread writer([&](const std::stop_token &stop) {
        const int descriptor = open(path.c_str(), O_WRONLY);
        for (std::size_t turn = 0; !stop.stop_requested(); ++turn)
            for (const std::uint32_t link : {kLinks[turn % std::size(kLinks)], kLink + 1024})
                std::ignore = pwrite(descriptor, words({link}).data(), 4, kLink);
        close(descriptor);
    });
    CapturedLog captured;
    std::size_t readable = 0;
    constexpr std::size_t kReadings = 5000;
    for (std::size_t reading = 0; reading < kReadings; ++reading) {
        // A new one each time, since a fault is remembered.
        const auto storage = ZPGorvaneBlockStorage::initV3StorageWithFileAtPath(path);
        ZPError error;
        const auto data = storage->readDataFromBlocksAtOffset(1024, kBlocks * 1020, &error);
        // A loop made while the chain is copied may give blocks twice, but no more bytes.
        ASSERT_TRUE(data ? data->size() == sound->size() : !error.domain.empty());
        readable += data == sound;
    }
    EXPECT_GT(readable, 0u);
    EXPECT_LT(readable, kReadings);
}

} // namespace
