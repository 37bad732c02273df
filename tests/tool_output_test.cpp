// What runs of the program leave behind when their surroundings are not as they should be.

#include "io/ZPError.h"
#include "tests/ProgramRun.h"
#include "tests/SampleRun.h"
#include "tests/TestSupport.h"
#include "tool/Options.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Contains;
using testing::HasSubstr;

namespace {

class OutputRun : public testing::Test {
  protected:
    /// Runs a shell's command, in which $0 is the program, $1 the world and $2 the output.
    ProgramRun shell(const std::string &command) const {
        return runProgram({"/bin/sh", "-c", command, kProgram, kWorld, folder / "map"});
    }
    std::size_t countFiles() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.path()), {}));
    }

    TemporaryFolder folder;
};

} // namespace

TEST_F(OutputRun, DrawsTheMapWhenNobodyReadsTheLog) {
    for (const std::string command :
         {"\"$0\" \"$1\" \"$2\" 2>&1 | head -1", "exec \"$0\" \"$1\" \"$2\" <&- >&- 2>&-"}) {
        EXPECT_EQ(shell(command).status, 0);
        EXPECT_EQ(decodePNG(folder / "map.png").width, kSize) << command;
        std::filesystem::remove(folder / "map.png");
    }
}

TEST_F(OutputRun, SaysThatTheDiskIsFull) {
    // As far as a limit on the size of files can stand for it.
    const ProgramRun result = shell("ulimit -f 512; exec \"$0\" \"$1\" \"$2\"");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.log, HasSubstr(ZPError::posix(EFBIG).description()));
    EXPECT_EQ(countFiles(), 0u);
}

TEST_F(OutputRun, KeepsLinksAndModes) {
    std::ofstream(folder / "picture") << "old";
    std::filesystem::permissions(folder / "picture", std::filesystem::perms::owner_read |
                                                         std::filesystem::perms::owner_write);
    std::filesystem::create_symlink("picture", folder / "map.png");
    EXPECT_EQ(shell("exec \"$0\" \"$1\" \"$2\"").status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "map.png"));
    EXPECT_EQ(decodePNG(folder / "picture").width, kSize);
    EXPECT_EQ(std::filesystem::status(folder / "picture").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_EQ(countFiles(), 2u);
}

TEST_F(OutputRun, ListsChangesOnStandardOutput) {
    const ProgramRun result = runProgram(
        {kProgram, "--old", kOlderWorld, "--save-changes", "/dev/stdout", kWorld, folder / "map"});
    EXPECT_THAT(result.output, testing::StartsWith("basePath: " + kOlderWorld + "\nbasePath: "));
    EXPECT_THAT(result.output, HasSubstr(kWorld + "\nadded: "));
    EXPECT_TRUE(std::filesystem::is_symlink("/dev/stdout"));
}

TEST_F(OutputRun, EndsWithAWordWhenThereIsNotEnoughMemory) {
#ifdef PLOTTERRA_SANITIZED
    GTEST_SKIP() << "sanitizers take terabytes of addresses";
#endif
    // From too little for the land to nearly enough. Where the program does not even start, the
    // system says so.
    for (const std::string kibibytes : {"40000", "70000", "100000", "140000", "150000", "250000"}) {
        const ProgramRun result =
            shell("ulimit -c 0; ulimit -v " + kibibytes + "; exec \"$0\" -g \"$1\" \"$2\"");
        const bool isDrawn = std::filesystem::remove(folder / "map.png");
        EXPECT_TRUE(isDrawn || result.logContains("memory") || result.status == 127)
            << kibibytes << ": " << result.log;
        EXPECT_EQ(countFiles(), 0u);
    }
}

TEST(Options, ReplaceTheExtensionOfTheOutput) {
    const std::pair<const char *, const char *> cases[] = {{"map", "map.png"},
                                                           {"map.jpg", "map.png"},
                                                           {"a.b.c", "a.b.png"},
                                                           {".map", ".map.png"},
                                                           {"a/.map", "a/.map.png"},
                                                           {"a.b/map", "a.b/map.png"},
                                                           {".map.jpg", ".map.png"},
                                                           {"map.", "map..png"},
                                                           {"a/map/", "a/map.png"},
                                                           {"a/..", "a/...png"},
                                                           {"/", "/"},
                                                           {"", ""}};
    for (const auto &[given, path] : cases)
        EXPECT_EQ(pathWithPNGExtension(given), path);
}
