// What each command says of archives of which a part cannot be read or not be trusted.

#include "tests/DataProgram.h"
#include "tests/FamilyArchive.h"
#include "tests/TestSupport.h"

#include "io/ZPSystemLog.h"

#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <sstream>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kWorld = PLOTTERRA_SAMPLE_WORLD;

std::vector<std::string> firstColumn(const std::string &table) {
    std::vector<std::string> column;
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);)
        column.push_back(line.substr(0, line.find('\t')));
    return column;
}

TEST(DataDamage, LandBlocksThatCannotBeReadAreSaidByEachCommand) {
    const TemporaryFolder folder;
    const std::string cells = kWorld + "/client_cell_1.dat", torn = folder / "torn";
    std::filesystem::create_directory(torn);
    std::filesystem::create_symlink(kWorld + "/client_portal.dat", torn + "/client_portal.dat");
    // The first block of every third land block leads off a boundary.
    std::string bytes = textOfFile(cells);
    const std::string table =
        data({"list", "--type", "WQLandBlock", "--format", "tsv", cells}).output;
    std::vector<std::string> damaged;
    std::istringstream lines(table);
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("0x") && count++ % 3 == 0) {
            damaged.push_back(line.substr(0, line.find('\t')));
            bytes[std::stoul(line.substr(line.rfind('\t') + 1), nullptr, 16)] = '\x11';
        }
    std::ofstream(torn + "/client_cell_1.dat") << bytes;
    ASSERT_GT(count, 60'000u);

    const std::string unread = ZPFormat("plotterra-data: %zu of %zu land blocks could not be read; "
                                        "`plotterra-data check` says why\n",
                                        damaged.size(), count);
    const std::string out = folder / "out";
    for (const std::vector<std::string> &words :
         std::vector<std::vector<std::string>>{{"info", torn},
                                               {"export", torn, "heights", out},
                                               {"export", torn, "types", out},
                                               {"export", torn, "roads", out},
                                               {"export", torn, "blocks", out}}) {
        const ProgramRun run = data(words);
        EXPECT_EQ(run.status, 1) << testing::PrintToString(words);
        EXPECT_THAT(run.log, EndsWith(unread));
    }
    const std::string tornCells = torn + "/client_cell_1.dat";
    for (const auto &[old, now] : {std::pair{cells, tornCells}, {tornCells, cells}}) {
        const std::string notCompared =
            ZPFormat("plotterra-data: %zu files could not be compared", damaged.size());
        for (const bool isLand : {false, true}) {
            const ProgramRun run =
                isLand ? data({"diff", "--land", old, now}) : data({"diff", old, now});
            EXPECT_EQ(run.status, 1);
            EXPECT_THAT(run.output, StartsWith("added: 0, removed: 0, changed: 0\n"));
            EXPECT_THAT(run.log, HasSubstr(notCompared));
        }
    }
    auto listed = firstColumn(data({"list", "--damaged", "--format", "tsv", torn}).output);
    listed.erase(listed.begin());
    EXPECT_EQ(listed, damaged);
    auto checked = firstColumn(data({"check", "--damaged", "--format", "tsv", torn}).output);
    checked.erase(checked.begin());
    EXPECT_EQ(checked, damaged);
}

/// Files of two blocks, 0x04000001 to 0x04000007, that hold their identifiers.
FamilyArchive archiveOfLongFiles() {
    FamilyArchive archive(3);
    for (std::uint32_t identifier = 0x04000001; identifier < 0x04000008; ++identifier)
        archive.addFile(identifier, joined({words({identifier}), ZPData(1500)}));
    archive.finish();
    return archive;
}

TEST(DataDamage, OfTwoChainsThatMeetTheStrayIsNamedAndBothAreDamaged) {
    const TemporaryFolder folder;
    const std::string sound = archiveOfLongFiles().writeToPath(folder / "sound.dat");
    constexpr std::uint32_t kBlock = FamilyArchive::kBlockSize;
    const auto offsetOf = [](const FamilyArchive &archive, std::uint32_t number) {
        return archive.entries.at(0x04000000 + number).offset;
    };
    const struct {
        const char *name;
        std::uint32_t stray, other;
        std::function<void(FamilyArchive &)> plant;
    } cases[] = {
        // As long as they should be: what lies in a row belongs together.
        {"second block, an earlier file", 2, 5,
         [&](FamilyArchive &a) { a.poke(offsetOf(a, 2), offsetOf(a, 5) + kBlock); }},
        {"second block, a later file", 5, 2,
         [&](FamilyArchive &a) { a.poke(offsetOf(a, 5), offsetOf(a, 2) + kBlock); }},
        {"into a first block", 2, 3,
         [&](FamilyArchive &a) { a.poke(offsetOf(a, 2) + kBlock, offsetOf(a, 3)); }},
        {"an entry of the same place", 1, 3,
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[0], 0) + 8, offsetOf(a, 3)); }},
    };
    for (const auto &[name, stray, other, plant] : cases) {
        FamilyArchive archive = archiveOfLongFiles();
        plant(archive);
        const std::string path = archive.writeToPath(folder / "x.dat");
        const std::string strayName = ZPFormat("0400000%u", stray),
                          otherName = ZPFormat("0400000%u", other);
        const std::string found = data({"check", path}).output;
        EXPECT_THAT(found,
                    testing::ContainsRegex(" " + strayName + " at .*: block .* belongs to file " +
                                           otherName + " too"))
            << name;
        EXPECT_THAT(found, testing::ContainsRegex(" " + otherName + " at .*: file " + strayName +
                                                  " strays into its block"));
        EXPECT_THAT(found, HasSubstr("       2 error: shared block\n")) << found;

        const auto namesBoth = AllOf(HasSubstr(strayName + ": "), HasSubstr(otherName + ": "));
        const std::vector<std::string> both = {"identifier", "0x" + std::min(strayName, otherName),
                                               "0x" + std::max(strayName, otherName)};
        EXPECT_EQ(firstColumn(data({"list", "--damaged", "--format", "tsv", path}).output), both);
        for (const std::string &identifier : {strayName, otherName})
            EXPECT_EQ(data({"check", "--id", identifier, path}).status, 1);
        EXPECT_THAT(data({"check", "--sound", path}).output, HasSubstr("5 files checked"));
        const ProgramRun extract = data({"extract", "--again", path, folder / "out"});
        EXPECT_THAT(extract.log, AllOf(namesBoth, EndsWith("5 files written, 0 were there, 2 "
                                                           "failed\n")));
        EXPECT_EQ(data({"extract", "--sound", "--again", path, folder / "out"}).status, 0);
        EXPECT_THAT(data({"diff", sound, path}).output,
                    EndsWith("added: 0, removed: 0, changed: 0\n"));
    }
}

TEST(DataDamage, FilesBelowALostNodeAreNotGone) {
    const TemporaryFolder folder;
    const std::string sound = archiveOfLongFiles().writeToPath(folder / "sound.dat");
    FamilyArchive archive = archiveOfLongFiles();
    archive.poke(archive.leaves[0], 0x11); // files 1 to 3
    // And one that is gone indeed: the count of the other leaf is one less.
    archive.poke(FamilyArchive::placeInChain(archive.leaves[1], 248), 2);
    const std::string path = archive.writeToPath(folder / "x.dat");
    const ProgramRun diff = data({"diff", sound, path});
    EXPECT_EQ(diff.status, 1);
    EXPECT_THAT(diff.output, AllOf(HasSubstr("removed 0x04000007"),
                                   EndsWith("added: 0, removed: 1, changed: 0\n")));
    EXPECT_THAT(diff.log, AllOf(HasSubstr("04000001: it may be lost"),
                                HasSubstr("3 files could not be compared")));
    EXPECT_THAT(data({"cat", path, "4000002"}).log, HasSubstr("or it is lost: the directory is"));
    EXPECT_THAT(data({"cat", path, "4000007"}).log, Not(HasSubstr("or it is lost")));
    for (const char *command : {"list", "check"}) {
        const ProgramRun run = data({command, "--damaged", path});
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.log, EndsWith("x.dat: files may be missing, since the archive is damaged; "
                                      "`plotterra-data check` says where\n"));
        // A type that is mistyped is said, whoever is asked for it.
        EXPECT_THAT(data({command, "--type", "0x05", sound}).log,
                    HasSubstr("--type 0x05: there are no such files"));
    }
}

TEST(DataDamage, PlacesThatAreNoneAreSaid) {
    const TemporaryFolder folder;
    const std::string plot = folder / "plot.txt", out = folder / "out.json";
    std::ofstream(plot) << "a;1N 2E;A\n\nb;somewhere;B\nc;3N 4E\n";
    const ProgramRun run = data({"export", plot, "places", out});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.log, EndsWith("2 of 5 lines in " + plot + " make no place, first line 3\n"));
    EXPECT_THAT(textOfFile(out), HasSubstr("\"A\""));
    std::ofstream(plot) << "a;1N 2E;\xff\n";
    std::filesystem::remove(out);
    const ProgramRun none = data({"export", plot, "places", out});
    EXPECT_EQ(none.status, 1);
    EXPECT_THAT(none.log, HasSubstr("line 1 is not UTF-8"));
    EXPECT_FALSE(std::filesystem::exists(out));
}

} // namespace
