// Whole runs of plotterra-sample, beside files that are not its own.

#include "tests/ProgramRun.h"
#include "tests/TestSupport.h"

#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

const std::string kProgram = PLOTTERRA_SAMPLE_PROGRAM;

ProgramRun make(const std::filesystem::path &directory, std::vector<std::string> options = {}) {
    std::vector<std::string> words = {kProgram, "--cells", "10"};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(directory);
    return runProgram(words);
}

} // namespace

TEST(SampleProgram, ReplacesItsOwnWorldsAndNothingElse) {
    const TemporaryFolder folder;
    for (const char *name : {"client_portal.dat", "client_highres.dat", "client_cell_1.dat",
                             "client_local_English.dat", "towns.txt"}) {
        const std::filesystem::path installed = folder / name;
        std::ofstream(installed) << "Sample worlds are what this is not.";
        const ProgramRun run = make(folder.path());
        EXPECT_EQ(run.status, 1) << name;
        EXPECT_THAT(run.log, HasSubstr(installed.string() + " is not of a sample world"));
        EXPECT_EQ(textOfFile(installed), "Sample worlds are what this is not.");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
        std::filesystem::remove(installed);
    }

    // Links and pipes are somebody's too, wherever they lead, and nothing waits for a pipe.
    const std::filesystem::path link = folder / "client_cell_1.dat", pipe = folder / "towns.txt";
    for (const std::vector<std::string> &options : {std::vector<std::string>(), {"--force"}}) {
        std::filesystem::create_symlink("elsewhere", link);
        EXPECT_EQ(make(folder.path(), options).status, 1);
        EXPECT_TRUE(std::filesystem::is_symlink(link) && !std::filesystem::exists(link));
        std::filesystem::remove(link);
        ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        EXPECT_THAT(make(folder.path(), options).log, HasSubstr("towns.txt is no file but a link"));
        std::filesystem::remove(pipe);
    }

    std::ofstream(folder / "client_cell_1.dat") << "short";
    EXPECT_EQ(make(folder.path(), {"--force"}).status, 0);
    const std::string first = textOfFile(folder / "client_cell_1.dat");
    const ProgramRun again = make(folder.path(), {"--seed", "4"});
    EXPECT_EQ(again.status, 0);
    EXPECT_THAT(again.log, IsEmpty()); // progress is for terminals
    EXPECT_NE(textOfFile(folder / "client_cell_1.dat"), first);

    // A list of towns that somebody has changed is somebody's.
    std::ofstream(folder / "towns.txt", std::ios::app) << "camp;1.0N 2.0E;Camp\n";
    EXPECT_EQ(make(folder.path()).status, 1);
    EXPECT_THAT(textOfFile(folder / "towns.txt"), testing::EndsWith("Camp\n"));
}

TEST(SampleProgram, LeavesWhatComesWhileItIsAtWork) {
    const TemporaryFolder folder;
    const std::filesystem::path world = folder / "world", late = world / "client_highres.dat";
    // At work it is as soon as it holds a file there open.
    const ProgramRun run = runProgram({"/bin/sh", "-c",
                                       "\"$0\" --cells 300000 \"$1\" & until ls -l /proc/$!/fd | "
                                       "grep -qF \"$1/\"; do :; done; echo late >\"$2\"; wait $!",
                                       kProgram, world, late});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.log, HasSubstr("client_highres.dat: is not of a sample world"));
    EXPECT_EQ(textOfFile(late), "late\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(world), {}), 1);
}

TEST(SampleProgram, SaysWhereItCannotWrite) {
    const TemporaryFolder folder;
    std::ofstream(folder / "file") << "x";
    const ProgramRun inFile = make(folder / "file/world");
    EXPECT_EQ(inFile.status, 1);
    EXPECT_THAT(inFile.log, HasSubstr("cannot create " + (folder / "file/world").string() + ": "));
    for (const char *name : {"client_local_English.dat", "towns.txt"}) {
        const std::filesystem::path taken = folder / "world" / name;
        std::filesystem::create_directories(taken);
        const ProgramRun run = make(folder / "world", {"--force"});
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.log, HasSubstr("cannot write " + taken.string() + ": Is a directory\n"));
        std::filesystem::remove_all(folder / "world");
    }
}

TEST(SampleProgram, LeavesNothingWhereAFileMayNotGrow) {
    const TemporaryFolder folder;
    // The portal archive has a mebibyte, that of cells more.
    for (const auto &[kibibytes, name] : {std::pair("200", "portal"), {"2000", "cell_1"}}) {
        const ProgramRun run = runProgram(
            {"/bin/bash", "-c", std::string("ulimit -f ") + kibibytes + "; exec \"$0\" \"$1\"",
             kProgram, (folder / "world").string()});
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.log, HasSubstr(std::string(name) + ".dat: File too large"));
        EXPECT_TRUE(std::filesystem::is_empty(folder / "world"));
    }
}

TEST(SampleProgram, TellsATerminalWhatItIsAbout) {
    const TemporaryFolder folder;
    const std::string command = kProgram + " --cells 10 " + (folder / "world").string();
    const auto run = runOnTerminal(command);
    if (!run)
        GTEST_SKIP() << "there is no terminal to be had";
    EXPECT_EQ(run->status, 0);
    EXPECT_THAT(run->output, HasSubstr("\rshaping the land ...\033[K"));
    EXPECT_THAT(run->output, HasSubstr("client_cell_1.dat ..."));
    EXPECT_THAT(run->output, testing::EndsWith("\r\033[K"));
}

TEST(SampleProgram, AnswersOnStandardOutput) {
    const ProgramRun help = runProgram({kProgram, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, StartsWith("Usage: plotterra-sample [options] <directory>\n"));
    const ProgramRun version = runProgram({kProgram, "--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.output, StartsWith("plotterra-sample "));
    for (const std::vector<std::string> &words :
         {std::vector{kProgram}, {kProgram, "--bogus", "/tmp"}, {kProgram, "--seed", "x", "/tmp"}})
        EXPECT_EQ(runProgram(words).status, 2);
    EXPECT_THAT(runProgram({kProgram, "--\x1b[31m"}).log, testing::HasSubstr(R"('--\u{1b}[31m')"));
    for (const char *number : {"20k", "", "-1", "4000001", "0x10", " 5"}) {
        const ProgramRun run = runProgram({kProgram, "--cells", number, "/tmp/none"});
        EXPECT_EQ(run.status, 2) << number;
        EXPECT_THAT(run.log, StartsWith("plotterra-sample: not a number in range: '" +
                                        std::string(number) + "'\n"));
    }
}
