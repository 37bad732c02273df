// Runs of the program with an older world to compare with.

#include "tests/ProgramRun.h"
#include "tests/SampleChanges.h"
#include "tests/SampleRun.h"
#include "tests/TestSupport.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

using testing::Contains;
using testing::HasSubstr;

namespace {

class ChangesRun : public testing::Test {
  protected:
    /// Draws one world against another and lists the changes.
    ProgramRun compare(const std::string &older, const std::string &newer) const {
        return runProgram({kProgram, "--old", older, "--save-changes", folder / "changes.txt",
                           newer, folder / "map"});
    }
    std::string report() const { return textOfFile(folder / "changes.txt"); }

    TemporaryFolder folder;
};

std::string listOf(const std::string &title, const std::vector<std::uint16_t> &blocks) {
    static const auto names = [] {
        std::map<unsigned, std::string> byBlock;
        for (auto &[block, name] : knownDungeonRows())
            byBlock[block] = std::move(name);
        return byBlock;
    }();
    std::string text = std::string(70, '-') + "\n" + title + " land blocks:\n";
    for (const unsigned block : blocks) {
        const auto place = [](unsigned index, const char *letters) {
            const double value = index * 0.8 - 101.9;
            char part[16];
            std::snprintf(part, sizeof part, "%5.1f%c", std::abs(value), letters[value < 0]);
            return std::string(part);
        };
        char number[8];
        std::snprintf(number, sizeof number, "%04x  ", block);
        text += number + place(block & 0xFF, "NS") + " " + place(block >> 8, "EW");
        if (const auto name = names.find(block); name != names.end())
            text += " -- " + name->second;
        text += "\n";
    }
    return text;
}

std::size_t countPixels(const DecodedPNG &picture, const char *color) {
    std::size_t count = 0;
    for (std::size_t offset = 0; offset < picture.bytes.size(); offset += 4)
        count += std::memcmp(&picture.bytes[offset], color, 4) == 0;
    return count;
}

constexpr char kGreen[] = "\x00\xff\x00\xff", kBlue[] = "\x00\x00\xff\xff",
               kRed[] = "\xff\x00\x00\xff";

} // namespace

TEST_F(ChangesRun, ListsAndMarksWhatTheSampleMakerChanged) {
    SampleOptions options;
    const SampleWorld newer(options);
    options.older = true;
    const SampleWorld older(options);
    SampleChanges changes = SampleCompareWorlds(older, newer);

    const ProgramRun result = compare(kOlderWorld, kWorld);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.logLines(), Contains("old data path: " + kOlderWorld));
    EXPECT_THAT(result.log, HasSubstr("hashed        0 / "));
    EXPECT_THAT(result.log, HasSubstr("= 100.0 %\n"));
    const auto count = [](const auto &blocks) { return std::to_string(blocks.size()); };
    const auto head = [&](const SampleChanges &c) {
        return "added: " + count(c.added) + ", removed: " + count(c.removed) +
               ", changed: " + count(c.changed) + "\n";
    };
    EXPECT_EQ(report(), head(changes) + listOf("Added", changes.added) +
                            listOf("Removed", changes.removed) +
                            listOf("Changed", changes.changed));

    const DecodedPNG map = decodePNG(folder / "map.png");
    for (const char *color : {kGreen, kBlue, kRed})
        EXPECT_GE(countPixels(map, color), 64u);
    // A block that came anew is blue to its inner points, for one with nothing else about it.
    const auto added = std::ranges::find_if(changes.added, [&](std::uint16_t block) {
        return !std::ranges::binary_search(changes.changed, block);
    });
    ASSERT_NE(added, changes.added.end());
    const std::size_t column = (*added >> 8) * 8u + 4u, row = 2040 - ((*added & 0xFFu) * 8u + 4u);
    EXPECT_EQ(std::memcmp(map.pixel(column, row), kBlue, 4), 0);

    // The other way about, what came has gone.
    compare(kWorld, kOlderWorld);
    std::swap(changes.added, changes.removed);
    EXPECT_EQ(report(), head(changes) + listOf("Added", changes.added) +
                            listOf("Removed", changes.removed) +
                            listOf("Changed", changes.changed));
}

TEST_F(ChangesRun, FindsNothingBetweenAWorldAndItself) {
    compare(kWorld, kWorld);
    EXPECT_EQ(report(), "added: 0, removed: 0, changed: 0\n" + listOf("Added", {}) +
                            listOf("Removed", {}) + listOf("Changed", {}));
    const DecodedPNG map = decodePNG(folder / "map.png");
    for (const char *color : {kGreen, kBlue, kRed})
        EXPECT_EQ(countPixels(map, color), 0u);
}

TEST_F(ChangesRun, GoesOnWithWhateverTheOldDirectoryHolds) {
    const auto makeOld = [&](const std::string &name, auto &&change) {
        std::filesystem::create_directory(folder / name);
        std::filesystem::copy(kWorld + "/client_cell_1.dat", folder / name);
        change(folder / name / "client_cell_1.dat");
    };
    std::filesystem::create_directory(folder / "empty");
    makeOld("cut", [](const std::filesystem::path &path) {
        std::filesystem::resize_file(path, std::filesystem::file_size(path) / 3);
    });
    makeOld("torn", [](const std::filesystem::path &path) {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        for (std::streamoff offset = 4096; offset < 8 << 20; offset += 40'000)
            file.seekp(offset).write("\xff\xff\xff\xff\xff\xff\xff\xff", 8);
    });
    // An archive of another kind under the cell archive's name.
    makeOld("other", [](const std::filesystem::path &path) {
        std::filesystem::copy_file(kWorld + "/client_portal.dat", path,
                                   std::filesystem::copy_options::overwrite_existing);
    });
    for (const std::string name : {"empty", "cut", "torn", "other", "missing"}) {
        const ProgramRun result = compare(folder / name, kWorld);
        EXPECT_EQ(result.status, 0) << name;
        EXPECT_EQ(decodePNG(folder / "map.png").width, 2041u) << name;
        EXPECT_TRUE(report().starts_with("added: ")) << name;
    }

    // Nowhere to write the list: the map is drawn all the same.
    const ProgramRun result = runProgram({kProgram, "--old", kWorld, "--save-changes",
                                          folder / "no/changes.txt", kWorld, folder / "map"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.log,
                HasSubstr("error saving changes: Error Domain=POSIXErrorDomain Code=2"));
}
