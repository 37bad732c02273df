#include "tests/ArchiveBytes.h"
#include "tests/BlockFileBytes.h"
#include "tests/TestSupport.h"

#include "game/WQClientData.h"

#include <gtest/gtest.h>

#include <concepts>
#include <ctime>
#include <sys/resource.h>

namespace {

constexpr std::size_t kBlockSize = ArchiveBytes::kBlockSize;
constexpr std::uint32_t kFileCount = 66;
/// Where the undamaged archive keeps things: its chains lie in the order in which they were added.
constexpr std::uint32_t kLandBlock = 0x300, kLongFile = 0x400;
constexpr std::uint32_t kFirstChild = 0x900, kSecondChild = 0x1000, kRoot = 0x1700;

ZPData landBlock(std::uint32_t identifier) {
    ZPData record = words({identifier, 0});
    record.resize(252, std::byte{20});
    return record;
}

/// What was found in an archive, however little.
struct Findings {
    std::size_t files = 0, readable = 0, records = 0;
    std::string log;
};

/// By how many KB the most memory that this process ever held has grown when `work` is done; 0
/// under a sanitizer, which keeps what the program frees.
template <std::invocable Work>
long growthOfPeakMemory(Work &&work) {
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    work();
    getrusage(RUSAGE_SELF, &after);
#ifdef PLOTTERRA_SANITIZED
    return 0;
#else
    return after.ru_maxrss - before.ru_maxrss;
#endif
}

class Damage : public testing::Test {
  protected:
    void SetUp() override {
        ArchiveBytes archive;
        archive.addFile(0xFFFF0001, words({1394}));
        archive.addFile(0x8080FFFF, landBlock(0x8080FFFF));
        archive.addFile(0x80800100, ZPData(1200, std::byte{7}));
        // All the others share the land block's chain, so that the archive is small.
        for (std::uint32_t column = 0x10; column < 0x10 + kFileCount - 3; ++column)
            archive.addEntry(column << 24 | 0xFFFF, {kLandBlock, 252, 0, 1});
        archive.writeToPath(_folder / "client_cell_1.dat");
        const std::string text = textOfFile(_folder / "client_cell_1.dat");
        const auto bytes = std::as_bytes(std::span(text.data(), text.size()));
        _sound.bytes.assign(bytes.begin(), bytes.end());
        _sound.blockSize = kBlockSize;
        std::filesystem::create_symlink("client_cell_1.dat", _folder / "client_portal.dat");
    }

    /// Loads an archive, as the cells and as the portal, and reads all there is.
    Findings load(const BlockFileBytes &file) {
        // Writing over a file makes some file systems wait for the disk.
        std::filesystem::remove(_folder / "client_cell_1.dat");
        file.writeToPath(_folder / "client_cell_1.dat");
        Findings found;
        testing::internal::CaptureStdout();
        CapturedLog captured;
        WQClientData clientData(_folder.path());
        clientData.loadAllFileEntries();
        const WQDataFile &dataFile = *clientData.cellDataFile();
        found.files = dataFile.fileCount();
        for (const ZPGorvaneFileEntry &entry : dataFile.fileEntriesByIdentifier()) {
            const auto bytes = dataFile.readDataForFileEntry(entry);
            found.readable += bytes.has_value();
            EXPECT_TRUE(!bytes || bytes->size() == entry.fileSize);
            found.records += clientData.newObjectForFileEntry(entry, dataFile) != nullptr;
        }
        (void)clientData.worldInfo();
        dataFile.check();
        found.log = captured.take();
        testing::internal::GetCapturedStdout();
        return found;
    }

    TemporaryFolder _folder;
    BlockFileBytes _sound{0};
};

TEST_F(Damage, AnArchiveCutAnywhereGivesWhatIsLeft) {
    const std::size_t size = _sound.bytes.size();
    ASSERT_EQ(size, kRoot + 0x700);
    const Findings whole = load(_sound);
    EXPECT_EQ(whole.files, kFileCount);
    EXPECT_EQ(whole.readable, kFileCount);
    EXPECT_EQ(whole.records, kFileCount);

    for (std::size_t length = 0; length < size;
         length += length < 360 || length + 8 > size ? 1 : 31) {
        BlockFileBytes file = _sound;
        file.bytes.resize(length);
        const Findings found = load(file);
        // The root is written last and fills its last block all but for 24 bytes.
        const bool hasRoot = length >= size - 24;
        EXPECT_EQ(found.files, hasRoot ? kFileCount : 0) << length;
        EXPECT_EQ(found.readable, found.files) << length;
    }
}

TEST_F(Damage, AnyByteOfHeaderAndDirectoryMayBeWrong) {
    const auto loadWithByte = [&](std::size_t offset, unsigned mask) {
        BlockFileBytes file = _sound;
        file.bytes[offset] ^= static_cast<std::byte>(mask);
        const Findings found = load(file);
        EXPECT_LE(found.files, 4 * kFileCount) << offset;
        EXPECT_LE(found.records, found.files) << offset;
        return found;
    };
    for (std::size_t offset = 256; offset < 356; ++offset)
        for (const unsigned mask : {0x01u, 0x80u, 0xFFu})
            loadWithByte(offset, mask);
    for (std::size_t offset = kRoot; offset < _sound.bytes.size(); ++offset)
        loadWithByte(offset, 0xFF);
    // The flip of a child's own bytes costs its brother nothing.
    for (std::size_t offset = kFirstChild; offset < kSecondChild; offset += 3)
        EXPECT_GE(loadWithByte(offset, 0xFF).files, kFileCount / 2 - 1) << offset;
}

TEST_F(Damage, SaysWhatIsWrong) {
    constexpr std::uint32_t kHuge = 0xFFFFFFFF;
    /// What the record's class says of a file that cannot be read.
    constexpr char kNoWord[] =
        "Caught exception: Trying to read past end in -[ZPDataCursor readLittleInt32]";
    const struct {
        std::size_t offset;
        std::uint32_t word;
        std::size_t files, readable;
        const char *line;
    } cases[] = {
        // the header
        {256, 0, 0, 0, "Bad magic number for V3 storage (00000000 00005442)"},
        {324, kHuge, 0, 0, "Error: Block size 4294967295 does not suit a file of 7680 bytes"},
        {328, 0x900, 0, 0,
         "Error: Error Domain=ZPGorvaneStorageErrorDomain Code=2 \"Block offset 00001700 does not "
         "fall within data area of file (00000100 - 00000900)\""},
        {340, 0x10, 66, 66, "Error: Free block 00000010 does not fall within data area of file"},
        {340, 0x1000, 66, 66, "Error: Free block 00001000 is not marked free"},
        {348, kHuge, 66, 66,
         "Error: Free block count recorded in header (4294967295) does not match actual free block "
         "count (0)"},
        {352, 0, 0, 0,
         "Error: Error Domain=ZPGorvaneStorageErrorDomain Code=6 \"Data length (0) is shorter than "
         "expected (1740)\" UserInfo={FirstBlockOffset=00000000}"},
        {352, kHuge, 0, 0,
         "Error: Error Domain=ZPGorvaneStorageErrorDomain Code=3 \"Block offset ffffffff does not "
         "begin on a block boundary\""},
        // the root: its chain, children, count and entry
        {kRoot, kRoot, 0, 0,
         "Error: Error Domain=ZPGorvaneStorageErrorDomain Code=4 \"Block chain starting at "
         "00001700 contains loop to 00001700\""},
        {kRoot + 4, kHuge, 34, 34, "dir 00001700> Subdirectory at index 0 failed checks..."},
        {kRoot + 4, kRoot, 34, 34,
         "dir 00001700> Subdirectory 00001700 was read already and is not followed again "
         "(client_cell_1.dat)"},
        {kRoot + 4, kSecondChild, 34, 34,
         "dir 00001700> Subdirectory 00001000 was read already and is not followed again "
         "(client_cell_1.dat)"},
        {kRoot + 252, kHuge, 66, 66,
         "Error: Directory 00001700 has an invalid number of files (4294967295), must be count <= "
         "61"},
        {kRoot + 252, 0, 32, 32,
         "dir 00001700> count: 0, but subdirectory 00001000 follows behind the last one, "
         "and nothing else leads there; it is left out (client_cell_1.dat)"},
        {kRoot + 0x100 + 12, kHuge, 66, 65, kNoWord},
        {kRoot + 0x100 + 16, kHuge, 66, 65, kNoWord},
        // a child, which has an empty slot after its entries
        {kFirstChild + 252, kHuge, 66, 66, "dir 00000900> Failed to create file entry 32"},
        {kFirstChild + 4, kRoot, 66, 66,
         "dir 00000900> Subdirectory 00001700 was read already and is not followed again "
         "(client_cell_1.dat)"},
        // files
        {kLandBlock, kLandBlock, 66, 2, kNoWord},
        {kLongFile, 1, 66, 65, kNoWord},
    };
    for (const auto &c : cases) {
        BlockFileBytes file = _sound;
        file.put(c.offset, words({c.word}));
        const Findings found = load(file);
        EXPECT_EQ(found.files, c.files) << c.line;
        EXPECT_EQ(found.readable, c.readable) << c.line;
        EXPECT_NE(found.log.find(std::string("] ") + c.line + "\n"), std::string::npos)
            << c.line << "\n"
            << found.log;
    }
}

TEST_F(Damage, NodesThatShareTheirChainsFillNoMemory) {
    // 150,000 leaves, each with a first block of its own, 8 bytes, and the rest in common.
    constexpr std::uint32_t kBlock = 8, kLeaves = 62 * 62 * 40;
    ZPData bytes(1024);
    const auto addChain = [&](const ZPData &data, std::uint32_t tail) {
        const auto first = static_cast<std::uint32_t>(bytes.size());
        for (std::size_t done = 0; done < data.size(); done += kBlock - 4) {
            const bool isLast = done + kBlock - 4 >= data.size();
            ZPAppendLittleInt32(bytes,
                                isLast ? tail : static_cast<std::uint32_t>(bytes.size()) + kBlock);
            const auto part = data.begin() + static_cast<std::ptrdiff_t>(done);
            bytes.insert(bytes.end(), part, part + (kBlock - 4));
        }
        return first;
    };
    ZPData entries;
    for (std::uint32_t number = 1; number <= 61; ++number)
        entries = joined({entries, words({1, number, 0, 0, 0, 0})});
    const ZPData countAndEntries = joined({words({61}), entries, ZPData(24)});
    const std::uint32_t files = addChain(countAndEntries, 0);
    const std::uint32_t tail = addChain(ZPData(244), files);
    std::vector<std::uint32_t> nodes(kLeaves);
    for (std::uint32_t &node : nodes)
        node = addChain(words({0}), tail);
    while (nodes.size() > 1) {
        std::vector<std::uint32_t> parents;
        for (std::size_t first = 0; first < nodes.size(); first += 62) {
            ZPData children;
            for (std::size_t index = first; index < std::min(first + 62, nodes.size()); ++index)
                ZPAppendLittleInt32(children, nodes[index]);
            children.resize(248);
            parents.push_back(addChain(children, files));
        }
        nodes = parents;
    }
    BlockFileBytes file(0, kBlock);
    file.bytes = std::move(bytes);
    file.rootOffset = nodes.front();
    file.putHeader(3);

    Findings found;
    EXPECT_LT(growthOfPeakMemory([&] { found = load(file); }), 64 * 1024);
    EXPECT_EQ(found.files, 61u);
    EXPECT_NE(found.log.find(" and all after it are not followed"), std::string::npos);
}

} // namespace

TEST(SharedChains, CostNoMoreThanTheArchiveIsLong) {
    const TemporaryFolder folder;
    ArchiveBytes archive;
    const std::uint32_t chain = archive.addChain(ZPData(20 << 20));
    for (std::uint32_t number = 1; number <= 20'000; ++number)
        archive.addEntry(number, {chain, 252, 0, 1});
    for (std::uint32_t number = 1; number <= 40; ++number)
        archive.addEntry(0x01000000 + number, {chain, 20 << 20, 0, 1});
    archive.writeToPath(folder / "archive");

    CapturedLog captured;
    WQDataFile dataFile(folder / "archive");
    dataFile.loadFileEntriesIfNecessary();
    EXPECT_NE(captured.take().find(
                  "The files claim more than 16 times what the archive holds; the 40 of 20971520 "
                  "bytes and more are not read (archive)"),
              std::string::npos);
    EXPECT_EQ(dataFile.fileCount(), 20'040u);
    // Following the whole chain for each of these would take most of a minute.
    std::size_t readable = 0;
    ZPData scratch;
    for (const ZPGorvaneFileEntry &entry : dataFile.fileEntriesByIdentifier())
        readable += dataFile.readBytesForFileEntry(entry, scratch).has_value();
    EXPECT_EQ(readable, 20'000u);
}

namespace {

/// Seconds of one processor that it takes to read so many files, as many times as it takes to be
/// worth measuring.
template <class Read>
double secondsToRead(const Read &read) {
    const std::clock_t start = std::clock();
    read();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

} // namespace

TEST(SharedChains, LongOnesCostNoMoreThanShortOnes) {
    // Each of these blocks leads into a loop, or into a long chain that ends.
    constexpr std::uint32_t kBlock = 64, kFiles = 60'000, kLoop = 500, kRest = 20'000;
    BlockFileBytes file(16 + 2 * kFiles + kLoop + kRest, kBlock);
    const auto offset = [](std::uint32_t number) { return number * kBlock; };
    constexpr std::uint32_t kLooping = 16, kEnding = kLooping + kFiles,
                            kFirstOfLoop = kEnding + kFiles, kFirstOfRest = kFirstOfLoop + kLoop;
    for (std::uint32_t number = 0; number < kFiles; ++number) {
        file.put(offset(kLooping + number), words({offset(kFirstOfLoop + number % kLoop)}));
        file.put(offset(kEnding + number), words({offset(kFirstOfRest)}));
    }
    for (std::uint32_t number = 0; number < kLoop; ++number)
        file.put(offset(kFirstOfLoop + number),
                 words({offset(kFirstOfLoop + (number + 1) % kLoop)}));
    for (std::uint32_t number = 0; number + 1 < kRest; ++number)
        file.put(offset(kFirstOfRest + number), words({offset(kFirstOfRest + number + 1)}));
    file.putHeader(3);
    const TemporaryFolder folder;
    const auto storage =
        ZPGorvaneBlockStorage::initV3StorageWithFileAtPath(file.writeToPath(folder / "archive"));
    ASSERT_NE(storage, nullptr);

    ZPData scratch;
    std::size_t readable = 0;
    const auto readFilesAt = [&](std::uint32_t first, std::uint32_t shift) {
        for (std::uint32_t number = 0; number < kFiles; ++number) {
            ZPError error;
            readable += storage
                            ->readBytesFromBlocksAtOffset(offset(first + number) + shift, 20,
                                                          scratch, &error)
                            .has_value();
        }
    };
    // Ten times the cost of files that do not even begin on a block.
    const double limit = 10 * secondsToRead([&] { readFilesAt(kLooping, 1); }) + 0.01;
    EXPECT_LT(secondsToRead([&] { readFilesAt(kLooping, 0); }), limit);
    EXPECT_EQ(readable, 0u);
    EXPECT_LT(secondsToRead([&] { readFilesAt(kEnding, 0); }), limit);
    EXPECT_EQ(readable, kFiles);
}

TEST(SharedChains, OneLoopThroughAWholeArchiveTakesLittleMemory) {
    constexpr std::uint32_t kBlock = 8, kBlocks = 2 << 20;
    BlockFileBytes file(kBlocks, kBlock);
    for (std::uint32_t block = 64; block < kBlocks; ++block)
        file.put(std::size_t{block} * kBlock,
                 words({(block + 1 < kBlocks ? block + 1 : 64) * kBlock}));
    file.putHeader(3);
    const TemporaryFolder folder;
    const auto storage =
        ZPGorvaneBlockStorage::initV3StorageWithFileAtPath(file.writeToPath(folder / "archive"));
    ASSERT_NE(storage, nullptr);
    ZPError error;
    const long growth = growthOfPeakMemory(
        [&] { EXPECT_FALSE(storage->readDataFromBlocksAtOffset(64 * kBlock, 20, &error)); });
    EXPECT_EQ(error.code, ZPGorvaneStorageErrorLoop);
    // The file itself, mapped, is 16 MB; a word for each block half of that.
    EXPECT_LT(growth, 40 * 1024);
}
