// What plotterra-data says where it cannot do what it is asked for, and what it does nevertheless.

#include "tests/DataProgram.h"
#include "tests/FamilyArchive.h"
#include "tests/TestSupport.h"

#include <gmock/gmock.h>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

const std::string kWorld = PLOTTERRA_SAMPLE_WORLD, kOlderWorld = PLOTTERRA_OLDER_SAMPLE_WORLD;

class DataRefusals : public testing::Test {
  protected:
    /// Files 0x04000001 to 0x04000003, which hold their identifiers.
    static FamilyArchive archive() {
        FamilyArchive made(3);
        for (std::uint32_t identifier = 0x04000001; identifier < 0x04000004; ++identifier)
            made.addFile(identifier, words({identifier}));
        return made;
    }
    std::string write(FamilyArchive made, const std::string &name) {
        made.finish();
        std::filesystem::create_directories((_folder / name).parent_path());
        return made.writeToPath(_folder / name);
    }
    std::string path(const std::string &name) const { return _folder / name; }

    TemporaryFolder _folder;
};

TEST_F(DataRefusals, WhatIsAskedForAmissIsNamed) {
    const std::string file = write(archive(), "x.dat");
    const struct {
        std::vector<std::string> words;
        int status;
        const char *complaint;
    } cases[] = {
        {{}, 2, "no command is given"},
        {{"sell", file}, 2, "'sell' is no command"},
        {{"cat", "--archive", "nope", file, "4000001"}, 1, "there is no archive named nope"},
        {{"cat", file, "4000009"}, 1, "x.dat: there is no file 04000009"},
        {{"cat", file, "xyz"}, 2, "'xyz' is no identifier"},
        {{"cat", file, "123456789"}, 2, "'123456789' is no identifier"},
        {{"list", "--larger", "5G", file}, 2, "'5G' is no number of bytes"},
        {{"list", "--larger", "-1", file}, 2, "--larger"},
        {{"list", "--larger", "18014398509481984K", file}, 2, "is no number of bytes"},
        {{"list", "--block", "12345", file}, 2, "'12345' is no land block"},
        {{"list", "--id", "5-4", file}, 2, "'5-4' is no identifier or range"},
        {{"list", "--id", "1-2-3", file}, 2, "'1-2-3' is no identifier or range"},
        {{"diff", file, kWorld}, 2, "one is a directory and the other an archive"},
        {{"diff", kWorld, file}, 2, "one is a directory and the other an archive"},
        {{"diff", "--land", file, file}, 1, "x.dat: has no cell archive of the first game"},
        {{"export", path("none"), "places", path("out")}, 1, "none: is no plot file"},
        {{"export", file, "heights", path("out")}, 1, "has no cell archive"},
        {{"info", path(std::string(300, 'x'))}, 1, "File name too long"},
        {{"extract", "--type", "4", file, file}, 1, "x.dat: Not a directory"},
        {{"extract", "--text", file, path("out")},
         1,
         "3 files, WQPalette: there is no decoder for them"},
    };
    for (const auto &[words, status, complaint] : cases) {
        const ProgramRun run = data(words);
        EXPECT_EQ(run.status, status) << testing::PrintToString(words) << run.log;
        EXPECT_THAT(run.log, HasSubstr(complaint));
        EXPECT_EQ(run.output, "");
    }
    EXPECT_EQ(data({"list", "--larger", "18014398509481983K", file}).status, 0);
    EXPECT_EQ(data({"diff", "--land", kWorld, kWorld}).status, 0);
    const std::string cells = data({"list", "--block", "7941", "--format", "tsv", kWorld}).output;
    EXPECT_THAT(cells, AllOf(HasSubstr("\n0x7941ffff\tcell\t"), Not(HasSubstr("0x7942"))));
    EXPECT_THAT(cells, Not(HasSubstr("\tportal\t")));
}

TEST_F(DataRefusals, ArchivesOfAnyNameAreFoundAndBrokenOnesPassedOver) {
    std::filesystem::create_directory(_folder / "set");
    EXPECT_THAT(data({"list", path("set")}).log, HasSubstr("there is no archive (*.dat) in it"));
    std::ofstream(_folder / "set/broken.dat") << std::string(5000, 'x');
    EXPECT_THAT(data({"list", path("set")}).log,
                AllOf(HasSubstr("broken.dat: is an archive of no known family"),
                      HasSubstr("none of its archives can be opened")));
    write(archive(), "set/my archive.dat");
    write(archive(), "set/.hidden.cell.dat");
    const ProgramRun list = data({"list", "--format", "tsv", "--id", "4000001", path("set")});
    EXPECT_EQ(list.status, 1);
    EXPECT_THAT(list.log, HasSubstr("broken.dat"));
    EXPECT_THAT(list.output, AllOf(HasSubstr("0x04000001\tmy%20archive\t0x04\tWQPalette\t"),
                                   HasSubstr("0x04000001\t%2Ehidden.cell\t\tWQDungeonBlock\t")));
    std::filesystem::remove(_folder / "set/broken.dat");
    EXPECT_EQ(data({"list", path("set")}).status, 0);

    // Of two sets, an archive that only one has counts as added or removed whole.
    write(archive(), "less/my archive.dat");
    EXPECT_THAT(data({"diff", path("less"), path("set")}).output,
                EndsWith("added: 3, removed: 0, changed: 0\n"));
    EXPECT_THAT(data({"diff", path("set"), path("less")}).output,
                EndsWith("added: 0, removed: 3, changed: 0\n"));
}

TEST_F(DataRefusals, WhatCannotBeReadOrDecodedIsSaidAndTheRestDone) {
    FamilyArchive damaged(3), other(3);
    for (FamilyArchive *made : {&damaged, &other}) {
        made->addFile(0x13000000, words({0x13000000, made == &other}));
        made->addFile(0x41000001, hex("01000041 01 61 0000"));
        made->addFile(0x41000002, hex("02000041 FF"));
        made->finish();
    }
    damaged.poke(damaged.entryPlace(damaged.leaves[1], 0) + 8, 0x7FFFFC00);
    const std::string file = damaged.writeToPath(_folder / "x.dat");
    EXPECT_THAT(data({"cat", file, "41000002"}).log, HasSubstr("41000002: "));
    const ProgramRun extract = data({"extract", file, path("out")});
    EXPECT_EQ(extract.status, 1);
    EXPECT_THAT(extract.log, AllOf(HasSubstr("x: 41000002: "),
                                   EndsWith("2 files written, 0 were there, 1 failed\n")));
    const ProgramRun text = data({"extract", "--text", "--type", "41", file, path("text")});
    EXPECT_EQ(text.status, 1);
    EXPECT_THAT(text.log, AllOf(HasSubstr("x: 41000001: at 0000000"),
                                EndsWith("0 files written, 0 were there, 2 failed\n")));
    const ProgramRun diff = data({"diff", "--records", file, other.writeToPath(_folder / "y.dat")});
    EXPECT_EQ(diff.status, 1);
    EXPECT_THAT(diff.log, AllOf(HasSubstr("13000000: at 0000000"), HasSubstr("x.dat: 41000002: ")));
    EXPECT_THAT(diff.output, EndsWith("added: 0, removed: 0, changed: 1\n"));

    // With a selection, only the damage of what is selected.
    EXPECT_THAT(data({"check", "--id", "41000002", file}).output,
                AllOf(HasSubstr("error: x.dat 41000002 at 00000000"), Not(HasSubstr("13000000"))));
}

TEST_F(DataRefusals, ManyFaultsOfADirectoryAreCutShortUnlessAllAreWanted) {
    FamilyArchive made = archive();
    made.finish();
    for (std::size_t child = 0; child < 60; ++child)
        made.poke(FamilyArchive::placeInChain(made.leaves[0], 4 * child),
                  0x401 + static_cast<std::uint32_t>(child));
    made.poke(FamilyArchive::placeInChain(made.leaves[0], 248), 61);
    const std::string file = made.writeToPath(_folder / "x.dat");
    const ProgramRun list = data({"list", file});
    EXPECT_EQ(list.status, 1);
    EXPECT_EQ(countOf(list.log, "failed checks..."), 20u);
    // And of an empty slot.
    EXPECT_THAT(list.log, HasSubstr("(41 more faults are not shown; `plotterra-data check` lists "
                                    "them all)"));
    EXPECT_GE(countOf(data({"check", file}).output, " does not begin on a block boundary"), 60u);
    const ProgramRun verbose = data({"--verbose", "list", file});
    EXPECT_EQ(countOf(verbose.log, "failed checks..."), 60u);
    EXPECT_THAT(verbose.log, HasSubstr("Loading file entries"));
}

TEST_F(DataRefusals, NothingIsWrittenWhereItCannotBe) {
    for (const char *subject : {"heights", "roads"}) {
        const ProgramRun run = data({"export", kWorld, subject, path("none/out")});
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.log, HasSubstr("none/out: No such file or directory"));
    }
    std::filesystem::create_directory(_folder / "types.tif.aux.xml");
    EXPECT_THAT(data({"export", kWorld, "types", path("types.tif")}).log,
                HasSubstr("types.tif.aux.xml: Is a directory"));
    // Real heights and names are the region record's; the roads are in the cells alone.
    std::filesystem::create_directory(_folder / "cells");
    std::filesystem::create_symlink(kWorld + "/client_cell_1.dat",
                                    _folder / "cells/client_cell_1.dat");
    EXPECT_THAT(data({"export", path("cells"), "heights", path("h.tif")}).log,
                HasSubstr("cells: has no region record"));
    EXPECT_EQ(data({"export", path("cells"), "roads", path("roads.json")}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(_folder / "h.tif"));
}

} // namespace
