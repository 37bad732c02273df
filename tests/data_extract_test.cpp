// What plotterra-data extracts, where to, and what it leaves as it is.

#include "tests/DataProgram.h"
#include "tests/FamilyArchive.h"
#include "tests/TestSupport.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;

class DataExtraction : public testing::Test {
  protected:
    /// An archive with a file of each of some types, which holds its text.
    std::string writeArchive(const std::string &name, const std::string &text,
                             std::uint32_t typeCount = 3) const {
        FamilyArchive made(3);
        for (std::uint32_t type = 1; type <= typeCount; ++type)
            made.addFile(0x80000001 + (type << 24 & 0x7F000000), text + std::to_string(type));
        made.finish();
        std::filesystem::create_directories((_folder / name).parent_path());
        return made.writeToPath(_folder / name);
    }
    /// A line of a shell in the folder, in which $DATA is the program.
    ProgramRun shell(const std::string &line) const {
        return runProgram(
            {"/bin/bash", "-c",
             "DATA=" PLOTTERRA_DATA_PROGRAM "; cd " + _folder.path().string() + "; " + line});
    }
    std::string textOf(const std::string &name) const { return textOfFile(_folder / name); }

    TemporaryFolder _folder;
};

TEST_F(DataExtraction, ArchivesOfAlikeNamesStayApart) {
    const std::pair<std::string, std::string> names[] = {
        {"ä", "ä"},           {"ö", "ö"},      {"x y", "x%20y"},          {"x_y", "x_y"},
        {"x%20y", "x%2520y"}, {"\xE4", "%E4"}, {"\u202Ez", "%E2%80%AEz"}, {"..b", "%2E.b"}};
    for (const auto &[name, folder] : names)
        writeArchive("set/" + name + ".dat", name);
    const ProgramRun run = shell("$DATA extract set out");
    EXPECT_THAT(run.log, EndsWith("24 files written, 0 were there, 0 failed\n"));
    for (const auto &[name, folder] : names) {
        EXPECT_EQ(textOf("out/" + folder + "/type_81/81000001.bin"), name + "1");
        for (const std::string &archive : {folder, name})
            EXPECT_THAT(shell("$DATA cat --archive '" + archive + "' set 82000001").output,
                        AnyOf(name + "2", archive == "x%20y" ? "x y2" : "?"));
    }
    // The one that changed is compared with itself.
    shell("cp -r set new");
    writeArchive("new/x y.dat", "changed");
    EXPECT_THAT(shell("$DATA diff --format tsv set new | cut -f1-3").output,
                AllOf(HasSubstr("\n0x81000001\tx%20y\tchanged\n"), Not(HasSubstr("x_y"))));
    // Archives of two families by one name.
    writeArchive("both/client_portal.dat", "first");
    FamilyArchive second(2);
    for (std::uint32_t number = 1; number < 4; ++number)
        second.addFile(number, "second");
    second.finish();
    second.writeToPath(_folder / "both/portal.dat");
    EXPECT_EQ(shell("$DATA list --format tsv both | cut -f2 | sort -u").output,
              "archive\nclient_portal\nportal\n");
}

TEST_F(DataExtraction, MoreFoldersThanFilesThatMayBeOpen) {
    for (const char name : {'a', 'b', 'c', 'd', 'e'})
        writeArchive(std::string("set/") + name + ".dat", "text", 60);
    const ProgramRun run = shell("ulimit -n 48; $DATA extract set out");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.log, EndsWith("300 files written, 0 were there, 0 failed\n"));
    EXPECT_EQ(textOf("out/e/type_bc/bc000001.bin"), "text60");
}

TEST_F(DataExtraction, DecodedFilesAreThereWhenDateSizeAndDecoderAre) {
    const std::string path = writeArchive("x.dat", "text"), file = "out/D/81000001.txt";
    const auto extract = [&](const char *field) {
        std::filesystem::create_directories(_folder / "lua");
        std::ofstream(_folder / "lua/d.lua")
            << "return {name='D', types={0x81, 0x82, 0x83}, decode=function(r, o) o:number('"
            << field << "', r:readLittleInt32()) end}";
        return shell("$DATA --decoders lua extract --text x.dat out").log;
    };
    const std::string written = "3 files written, 0 were there", there = "0 files written, 3 were";
    const std::string mended = "1 files written, 2 were there";
    EXPECT_THAT(extract("a"), HasSubstr(written));
    EXPECT_THAT(extract("a"), HasSubstr(there));
    EXPECT_THAT(textOf(file), HasSubstr("a: 1954047348"));
    EXPECT_THAT(extract("b"), HasSubstr(written)); // another text of the same size
    EXPECT_THAT(textOf(file), HasSubstr("b: 1954047348"));
    // With the same date but not whole, or with one that only looks the same.
    shell("touch -r " + file + " date; truncate -s -1 " + file + "; touch -r date " + file);
    EXPECT_THAT(extract("b"), HasSubstr(mended));
    shell("touch -d @1000000000 " + file);
    EXPECT_THAT(extract("b"), HasSubstr(mended));
    EXPECT_THAT(extract("b"), HasSubstr(there));
    struct stat status {};
    ASSERT_EQ(stat((_folder / file).c_str(), &status), 0);
    EXPECT_EQ(status.st_mtime, 1000000000);
}

TEST_F(DataExtraction, AFullDiskIsSaidOnce) {
    writeArchive("x.dat", std::string(3000, 'x'), 60);
    const std::string mount = "mkdir -p full; mount -t tmpfs -o size=64k none full; ";
    if (shell("unshare -rm sh -c '" + mount + "true'").status != 0)
        GTEST_SKIP() << "no file system of one's own is to be had";
    const ProgramRun run =
        shell("unshare -rm sh -c '" + mount +
              "$0 extract x.dat full/out; s=$?; find full -size 0; exit $s' $DATA");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(countOf(run.log, "No space left on device"), 1u);
    EXPECT_THAT(run.log, testing::ContainsRegex("; given up, [1-9][0-9]* were still to come\n$"));
    EXPECT_EQ(run.output, ""); // nothing half
}

TEST_F(DataExtraction, SelectionsOfNothingAreSaid) {
    writeArchive("x.dat", "text");
    const struct {
        const char *command;
        int status;
        const char *said;
    } cases[] = {
        {"extract --type 99,81 x.dat o", 1, "--type 0x99: there are no such files"},
        {"extract --type WQPalette x.dat o", 1, "--type WQPalette: there are no such files"},
        {"extract --id 1-5,81000001 x.dat o", 1, "--id 00000001-00000005: there are no"},
        {"extract --block 8100 x.dat o", 1, "--block 8100: there are no such files"},
        {"extract --type 81 --larger 1M x.dat o", 0, "0 files written"},
        {"extract --damaged x.dat o", 0, "0 files written"},
        {"list --newer '' x.dat", 2, "--newer: must not be empty"},
        {"list --larger '' x.dat", 2, "--larger: must not be empty"},
        {"list --ids-from '' x.dat", 2, "--ids-from: must not be empty"},
        {"list --type '' x.dat", 2, "'' is no type"},
        {"list --id '' x.dat", 2, "'' is no identifier"},
        {"list --block '' x.dat", 2, "'' is no land block"},
        {"cat --archive '' x.dat 81000001", 2, "--archive: must not be empty"},
        {"list --ids-from . x.dat", 2, ".: cannot be read: Is a directory"},
        {"list --ids-from none x.dat", 2, "none: cannot be read: No such file"},
        {"list --ids-from - x.dat <&-", 2, "-: cannot be read: Bad file descriptor"},
        {"list --ids-from - x.dat <.", 2, "-: cannot be read: Is a directory"},
        {"list --ids-from /dev/zero x.dat", 2, "/dev/zero: cannot be read: line 1 is longer"},
    };
    for (const auto &[command, status, said] : cases) {
        const ProgramRun run = shell(std::string("$DATA ") + command);
        EXPECT_EQ(run.status, status) << command;
        EXPECT_THAT(run.log, HasSubstr(said)) << command;
        EXPECT_EQ(run.output, "") << command;
    }
}

} // namespace
