#include "tests/ArchiveBytes.h"
#include "tests/BlockFileBytes.h"
#include "tests/TestSupport.h"

#include "game/WQClientData.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

namespace {

constexpr std::size_t kBlockSize = ArchiveBytes::kBlockSize;
constexpr std::uint32_t kFileCount = 66;
/// Where the undamaged archive keeps things: its chains lie in the order in which they were added.
constexpr std::uint32_t kVersion = 0x200, kLandBlock = 0x300, kLongFile = 0x400;
constexpr std::uint32_t kFirstChild = 0x900, kSecondChild = 0x1000, kRoot = 0x1700;
constexpr std::size_t kHeaderWord = 320;

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
        file.writeToPath(_folder / "client_cell_1.dat");
        Findings found;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
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
        clientData.worldInfo();
        dataFile.check();
        found.log = testing::internal::GetCapturedStderr();
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
    const struct {
        std::size_t offset;
        std::uint32_t word;
        std::size_t files, readable;
        const char *line;
    } cases[] = {
        // the header
        {256, 0, 0, 0, "Bad magic number for V3 storage (00000000 00005442)"},
        {kHeaderWord + 4, kHuge, 0, 0,
         "Error: Block size 4294967295 does not suit a file of 7680 bytes"},
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

} // namespace
