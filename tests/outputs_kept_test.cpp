// Each output of each program, aimed at each file that a run reads or writes besides, and at
// archives that have no part in it, by every way that leads to a file: none of them is ever
// changed.

#include "tests/ProgramRun.h"
#include "tests/TestSupport.h"

#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <sys/stat.h>

using testing::AnyOf;
using testing::HasSubstr;

namespace {

/// A shell's command that writes to $T, or to $T and an ending that the program adds.
struct OutputRow {
    const char *name, *command, *ending;
    /// What its status is when it does not write.
    int status;
};

constexpr OutputRow kOutputs[] = {
    {"map", "$MAP --old $O --plot plot.txt $W $T", ".png", 0},
    {"height map", "$MAP -h $W $T", ".png", 0},
    {"changes", "$MAP --old $O --plot plot.txt --save-changes $T $W map", "", 0},
    {"stages of a map", "PLOTTERRA_STAGES=$T $MAP --plot plot.txt $W map", "", 0},
    {"page", "$WEB --old $O --plot plot.txt $W $T", ".html", 1},
    {"stages of a page", "PLOTTERRA_STAGES=$T $WEB --plot plot.txt $W page", "", 0},
    {"heights", "$DATA --decoders lua export $W heights $T", "", 1},
    {"types", "$DATA --decoders lua export $W types $T", "", 1},
    {"names of types", "$DATA --decoders lua export $W types $T", ".aux.xml", 1},
    {"roads", "$DATA --decoders lua export $W roads $T", "", 1},
    {"blocks", "$DATA --decoders lua export $W blocks $T", "", 1},
    {"places", "$DATA --decoders lua export plot.txt places $T", "", 1},
    {"list", "$DATA --decoders lua list --ids-from ids.txt $W >>$T", "", 1},
};

/// What may not be written over: an archive by nobody, another file by runs that read it.
constexpr struct {
    const char *path, *option;
} kVictims[] = {{"world/client_cell_1.dat", ""}, {"world/client_portal.dat", ""},
                {"older/client_cell_1.dat", ""}, {"other.dat", ""},
                {"plot.txt", " plot.txt"},       {"ids.txt", " ids.txt"},
                {"lua/d.lua", " lua "}};

/// The ways to a file that a shell makes as $T.
constexpr struct {
    const char *name, *make;
    /// Whether it leads to names that a program adds an ending to.
    bool hasEnding;
} kWays[] = {{"itself", "T=$V", false},
             {"a folder's link", "ln -s . way; T=way/$V", false},
             {"a link", "ln -s $V way$E; T=way", true},
             {"a chain of links", "ln -s $PWD/$V end; ln -s end way$E; T=way", true},
             {"a hard link", "ln $V way$E; T=./way", true}};

class KeptFiles : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        folder = std::make_unique<TemporaryFolder>();
        std::filesystem::copy(PLOTTERRA_SAMPLE_WORLD, *folder / "world");
        std::filesystem::copy(PLOTTERRA_OLDER_SAMPLE_WORLD, *folder / "older");
        std::filesystem::copy_file(*folder / "world/client_highres.dat", *folder / "other.dat");
        std::ofstream(*folder / "plot.txt") << "town;1.0N 2.0E;Town\n";
        std::ofstream(*folder / "ids.txt") << "04000001\n";
        std::filesystem::create_directory(*folder / "lua");
        std::ofstream(*folder / "lua/d.lua") << "return {name='D', types={0x99}, "
                                                "decode=function(r, o) end}";
        for (const auto &entry : std::filesystem::recursive_directory_iterator(folder->path()))
            if (entry.is_regular_file())
                contents[entry.path()] = textOfFile(entry.path());
    }
    static void TearDownTestSuite() { folder.reset(); }

    static ProgramRun shell(const std::string &commands) {
        return runProgram({"/bin/bash", "-c",
                           "cd '" + folder->path().string() +
                               "'; MAP='" PLOTTERRA_PROGRAM "' WEB='" PLOTTERRA_WEB_PROGRAM
                               "' DATA='" PLOTTERRA_DATA_PROGRAM "' MAKE='" PLOTTERRA_SAMPLE_PROGRAM
                               "' W=world O=older; " +
                               commands});
    }

    /// Removes what is none of the files made at first, and looks at those.
    static void expectKept(const std::string &what) {
        for (const auto &[path, text] : contents)
            EXPECT_TRUE(textOfFile(path) == text) << path << " by " << what;
        std::vector<std::filesystem::path> others;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(folder->path()))
            if ((entry.is_symlink() || !entry.is_directory()) && !contents.contains(entry.path()))
                others.push_back(entry.path());
        for (const auto &path : others)
            std::filesystem::remove(path);
    }

    static inline std::unique_ptr<TemporaryFolder> folder;
    static inline std::map<std::filesystem::path, std::string> contents;
};

TEST_F(KeptFiles, ByAnyOutputOnAnyWay) {
#ifdef PLOTTERRA_SANITIZED
    GTEST_SKIP() << "takes minutes where programs take ten times as long to start and end";
#endif
    for (const OutputRow &output : kOutputs)
        for (const auto &victim : kVictims) {
            if (std::string_view(output.command).find(victim.option) == std::string_view::npos)
                continue;
            const bool isFirst = &victim == kVictims;
            for (const auto &way : kWays) {
                const std::string ending = output.ending, name = way.name;
                // The ways are the same for all files.
                if ((!ending.empty() && !way.hasEnding) ||
                    (!isFirst && name != "itself" && name != "a hard link"))
                    continue;
                const std::string what =
                    std::string(output.name) + " on " + victim.path + " by " + name;
                const ProgramRun run = shell("V=" + std::string(victim.path) + " E=" + ending +
                                             "; " + way.make + "; export T; " + output.command);
                EXPECT_EQ(run.status, output.status) << what << run.log;
                EXPECT_THAT(run.log,
                            AnyOf(HasSubstr("is not written over"), HasSubstr("left as it is")))
                    << what;
                expectKept(what);
            }
        }
}

TEST_F(KeptFiles, OtherOutputsOfTheSameRun) {
    const struct {
        const char *commands;
        int status;
    } cases[] = {
        {"$MAP --old $O --save-changes map.png $W map", 0},
        {"ln -s map.png c; $MAP --old $O --save-changes c $W map", 0},
        {"echo >c; ln c map.png; $MAP --old $O --save-changes c $W map", 0},
        {"$MAP --old $O --save-changes /dev/stdout $W map >map.png", 0},
        {"PLOTTERRA_STAGES=map.png $MAP $W map", 0},
        {"PLOTTERRA_STAGES=./c $MAP --old $O --save-changes c $W map", 0},
        {"PLOTTERRA_STAGES=page.html $WEB $W page", 1},
        {"echo >t; ln t t.aux.xml; $DATA export $W types t", 1},
    };
    for (const auto &[commands, status] : cases) {
        const ProgramRun run = shell(commands);
        EXPECT_EQ(run.status, status) << commands << run.log;
        EXPECT_THAT(run.log, HasSubstr("is another output of the same run as well")) << commands;
        for (const char *name : {"map.png", "page.html", "t"})
            EXPECT_LT(textOfFile(*folder / name).size(), 1000u) << commands;
        expectKept(commands);
    }
}

TEST_F(KeptFiles, NothingIsExtractedAmongArchives) {
    const std::string read = "holds an archive";
    const std::pair<const char *, std::string> cases[] = {
        {"$DATA extract $W $W", read},
        {"ln -s $W x; $DATA extract $W x", read},
        {"mkdir x; ln -s ../other.dat x/y; $DATA extract $W/client_portal.dat x", read},
        {"mkdir -p x/portal; ln other.dat x/portal/y; $DATA extract --type 6 $W x", read},
        {"mkdir -p x/WQImage; ln other.dat x/WQImage/06000001.bin; "
         "$DATA extract --type 6 $W/client_portal.dat x",
         "06000001.bin: begins as an archive does"},
        {"mkdir -p x/WQImage; ln -s ../../other.dat x/WQImage/06000001.bin; "
         "$DATA extract --type 6 $W/client_portal.dat x",
         " 0 failed"}};
    for (const auto &[commands, said] : cases) {
        const ProgramRun run = shell(commands);
        EXPECT_THAT(run.log, HasSubstr(said)) << commands;
        expectKept(commands);
        shell("rm -rf x");
    }
}

TEST_F(KeptFiles, DevicesAndPipesAreWrittenToAndFoldersAreNot) {
    const std::pair<const char *, const char *> cases[] = {
        {"$DATA export $W roads /dev/stdout | head -c 1", "{"},
        {"$DATA export $W roads /dev/null; echo $?", "0\n"},
        {"mkfifo p; head -c 5 p & $MAP --old $O --save-changes p $W map 2>&1 >&-; wait", "added"},
        {"mkfifo p; grep -o compare p & PLOTTERRA_STAGES=p $MAP --old $O $W map >&-; wait",
         "compare\n"},
        {"mkfifo p; PLOTTERRA_STAGES=p timeout 30 $MAP $W map >&-; echo $?", "0\n"},
        {"$WEB $W /dev/stdout | head -c 9", "<!DOCTYPE"},
        {"for s in heights blocks; do mkdir $s; $DATA export $W $s $s; echo $?; rmdir $s; done",
         "1\n1\n"}};
    for (const auto &[commands, output] : cases) {
        const ProgramRun run = shell(commands);
        EXPECT_THAT(run.output, HasSubstr(output)) << commands << run.log;
        expectKept(commands);
    }
}

TEST_F(KeptFiles, PipesAsInputsHangNobody) {
    shell("mkfifo p; mkdir d; mkfifo d/client_cell_1.dat d/client_portal.dat");
    const std::pair<const char *, int> cases[] = {{"$MAP d map", 0},
                                                  {"$MAP --old d --plot p $W map", 0},
                                                  {"$WEB d page", 1},
                                                  {"$WEB --plot p $W page", 0},
                                                  {"$DATA info p", 1},
                                                  {"$DATA list d", 1},
                                                  {"$DATA cat p 1", 1},
                                                  {"$DATA check d", 1},
                                                  {"$DATA diff $W d", 1},
                                                  {"$DATA export p places t", 1},
                                                  {"$DATA extract p x", 1},
                                                  {"$DATA list --ids-from p $W", 0},
                                                  {"$DATA export d roads t", 1}};
    for (const auto &[command, status] : cases) {
        const ProgramRun run = shell(std::string("timeout 30 ") + command);
        EXPECT_EQ(run.status, status) << command << run.log;
    }
    EXPECT_THAT(shell("$DATA info p").log, HasSubstr("p: no regular file"));
    // One with a writer is read to its end.
    EXPECT_THAT(shell("$MAP --plot <(sleep 0.1; cat plot.txt) $W map").log,
                HasSubstr("Found 1 coordinates"));
    EXPECT_EQ(countOf(shell("$DATA list --ids-from <(cat ids.txt) $W").output, "\n"), 1u);
    shell("rm -r d");
    expectKept("pipes");
}

TEST_F(KeptFiles, FullDevicesAndReadersThatGoAway) {
    const struct {
        const char *command;
        int full, gone;
    } cases[] = {{"$DATA list $W", 1, 0},       {"$DATA info $W", 1, 0},
                 {"$DATA diff $O $W", 1, 1},    {"$DATA diff --land $O $W", 1, 1},
                 {"$DATA check bad.dat", 1, 1}, {"$DATA check --format tsv bad.dat", 1, 1},
                 {"$DATA check $W", 1, 0},      {"$DATA cat $W 13000000", 1, 0},
                 {"$DATA decoders", 1, 0},      {"$DATA --help", 1, 0},
                 {"$DATA list --help", 1, 0},   {"$WEB --help", 1, 0},
                 {"$WEB --version", 1, 0}};
    // A link of the first archive that leads nowhere.
    shell("cp other.dat bad.dat; for b in 1 2 3 4 5 6 7 8; do printf '\\7' | "
          "dd of=bad.dat bs=1 seek=$((1024 * b * 3)) conv=notrunc status=none; done");
    for (const auto &[command, full, gone] : cases) {
        EXPECT_EQ(shell(std::string(command) + " >&-").status, full) << command;
        const ProgramRun run = shell(std::string(command) + " >/dev/full");
        EXPECT_EQ(run.status, full) << command;
        EXPECT_THAT(run.log, HasSubstr("cannot write to standard output")) << command;
        // The reader is gone when the program begins.
        const ProgramRun unread =
            shell("exec 3> >(:); sleep 0.05; " + std::string(command) + " >&3");
        EXPECT_EQ(unread.status, gone) << command << unread.log;
        EXPECT_THAT(unread.log, Not(HasSubstr("standard output"))) << command;
    }
    expectKept("full devices");
}

} // namespace
