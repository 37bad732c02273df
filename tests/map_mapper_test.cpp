#include "map/WQMapper.h"
#include "tests/ArchiveBytes.h"
#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

using Lines = std::vector<std::string>;

ZPData landBlock(std::uint32_t identifier, std::byte height) {
    ZPData bytes = words({identifier, 0});
    bytes.resize(8 + 2 * 81 + 82, height);
    return bytes;
}

/// The land that a renderer sets up from archives that nobody has loaded before.
class LandSetup : public testing::Test {
  protected:
    std::filesystem::path cellArchive(const std::string &name) const {
        std::filesystem::create_directory(folder / name);
        return folder / name / "client_cell_1.dat";
    }

    void writeWorld(const std::string &name, const std::map<std::uint32_t, ZPData> &files) const {
        ArchiveBytes archive;
        for (const auto &[identifier, bytes] : files)
            archive.addFile(identifier, bytes);
        archive.writeToPath(cellArchive(name));
    }

    Lines shortcomingsOf(const std::string &name) const {
        WQClientData clientData(folder / name);
        WQMapper mapper(clientData);
        EXPECT_TRUE(mapper.setupLandBlockData());
        return mapper.shortcomings();
    }

    TemporaryFolder folder;
};

TEST_F(LandSetup, ClientDataOfNoDirectoryHasNoLand) {
    writeWorld("newer", {{0x1234FFFF, landBlock(0x1234FFFF, std::byte{1})}});
    WQClientData none, newer(folder / "newer");
    ZPError error;
    EXPECT_FALSE(WQMapper(none).saveMapToURL(folder / "map.png", &error));
    EXPECT_EQ(error.domain, kWQMapperErrorDomain);
    EXPECT_FALSE(WQMapper(none).saveHeightMapToURL(folder / "map.png", &error));
    EXPECT_FALSE(std::filesystem::exists(folder / "map.png"));
    WQMapper mapper(newer);
    mapper.setOldClientData(&none);
    ASSERT_TRUE(mapper.setupLandBlockData());
    EXPECT_EQ(mapper.comparison(), nullptr);
}

TEST_F(LandSetup, LoadsBothArchivesBeforeItCompares) {
    const ZPData low = landBlock(0x1234FFFF, std::byte{1}),
                 high = landBlock(0x1234FFFF, std::byte{2});
    writeWorld("older", {{0x1234FFFF, low}, {0x00010100, low}});
    writeWorld("newer", {{0x1234FFFF, high}, {0x00020100, low}});
    WQClientData older(folder / "older"), newer(folder / "newer");
    WQMapper mapper(newer);
    mapper.setOldClientData(&older);
    ASSERT_TRUE(mapper.setupLandBlockData());
    EXPECT_EQ(mapper.comparison()->fileKeysAdded(), std::vector{0x00020100u});
    EXPECT_EQ(mapper.comparison()->fileKeysRemoved(), std::vector{0x00010100u});
    EXPECT_EQ(mapper.comparison()->fileKeysChanged(), std::vector{0x1234FFFFu});
    EXPECT_TRUE(mapper.landGrid()->at(0x12 * 8, 0x34 * 8).has(WQLandPoint::wasChanged));
    EXPECT_EQ(mapper.shortcomings(), Lines());
}

TEST_F(LandSetup, SaysWhichArchiveLeftItWithoutLandAndWhy) {
    const ZPData block = landBlock(0x1234FFFF, std::byte{1});
    const std::string none = "The picture shows no land: ";
    writeWorld("sound", {{0x1234FFFF, block}, {0x12340100, block}});
    EXPECT_EQ(shortcomingsOf("sound"), Lines());

    const auto path = [this](const std::string &name) { return cellArchive(name).string(); };
    writeWorld("empty", {});
    writeWorld("portal", {{0x13000000, block}, {0x12340100, block}});
    writeWorld("unreadable", {{0x1234FFFF, ZPData(9)}, {0xFFFEFFFF, ZPData(9)}});
    writeWorld("outside", {{0xFF00FFFF, block}});
    std::ofstream(path("short")) << "no archive";
    std::ofstream(path("text")) << std::string(5000, 'x');
    writeWorld("locked", {{0x1234FFFF, block}});
    const int descriptor = open(path("locked").c_str(), O_RDONLY);
    ASSERT_EQ(flock(descriptor, LOCK_EX), 0);
    const struct {
        std::string name, reason;
    } cases[] = {
        {"empty", "no files are found in " + path("empty")},
        {"portal", "none of the files in " + path("portal") + " is a land block (2)"},
        {"unreadable", "none of the land blocks in " + path("unreadable") + " can be read (2)"},
        {"outside", "none of the land blocks in " + path("outside") + " can be read (1)"},
        {"short", path("short") + " cannot be opened: it is no archive of this kind"},
        {"text", path("text") + " cannot be opened: it is no archive of this kind"},
        {"locked", path("locked") + " cannot be opened: another program holds it"},
        {"missing", path("missing") + " cannot be opened: No such file or directory"},
    };
    for (const auto &[name, reason] : cases) {
        EXPECT_EQ(shortcomingsOf(name), Lines{none + reason});

        WQClientData older(folder / name), newer(folder / "sound");
        WQMapper mapper(newer);
        mapper.setOldClientData(&older);
        ASSERT_TRUE(mapper.setupLandBlockData());
        const bool hasFiles = older.cellDataFile()->fileCount() != 0;
        EXPECT_EQ(mapper.shortcomings(),
                  hasFiles ? Lines() : Lines{"All land counts as added: " + reason});
        mapper.setOldClientData(nullptr);
        ASSERT_TRUE(mapper.setupLandBlockData());
        EXPECT_EQ(mapper.shortcomings(), Lines()); // those of the next picture
    }
    close(descriptor);
}

} // namespace
