// Runs of plotterra-web on the sample world, which the test suite makes first.

#include "tests/PatchedWorld.h"
#include "tests/ProgramRun.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

namespace {

class WebRun : public testing::Test {
  protected:
    ProgramRun run(std::vector<std::string> words) const {
        words.insert(words.begin(), PLOTTERRA_WEB_PROGRAM);
        return runProgram(words);
    }

    TemporaryFolder folder;
    const std::string world = PLOTTERRA_SAMPLE_WORLD, page = folder / "page.html";
};

} // namespace

TEST_F(WebRun, SaysHowItIsUsed) {
    const ProgramRun help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, HasSubstr("--plot FILE"));
    const ProgramRun version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.output, HasSubstr("plotterra-web 3"));
    const std::vector<std::string> wrong[] = {
        {}, {world}, {"--bogus", world, page}, {world, page, "--old"}};
    for (const auto &words : wrong)
        EXPECT_EQ(run(words).status, 2) << testing::PrintToString(words);
    EXPECT_THAT(run({world, page, "\x1b[31m"}).log, HasSubstr(R"(\u{1b}[31m)"));
}

TEST_F(WebRun, HeightsThatAreNoNumbersAreSaidAndCountAsZero) {
    const std::string odd = patchedWorld(folder / "world", world, [](std::string &portal) {
        patchLandHeight(portal, 1, std::numeric_limits<float>::infinity());
        patchLandHeight(portal, 2, std::numeric_limits<float>::quiet_NaN());
    });
    const ProgramRun result = run({odd, page});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.logContains("Error: 2 of the 256 land heights in the region record "
                                   "(13000000) are no finite numbers, first that of index 1; they "
                                   "are taken to be 0"));
    EXPECT_THAT(textOfFile(page), testing::ContainsRegex("\"heights\":.0.0,0.0,0.0,3.0"));
}

TEST_F(WebRun, PlacesOffTheWorldAreSaidAndNotInThePage) {
    std::ofstream(folder / "places.txt") << "port;1N 2E;In\n;1e308N 1E;Off\n";
    const ProgramRun result = run({"--plot", folder / "places.txt", world, page});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.logContains("Error: 1 of 2 places are off the world"));
    EXPECT_THAT(textOfFile(page), HasSubstr(R"("places":[[2.0,1.0,"In","port"]])"));
}

TEST_F(WebRun, WritesThePageWithinItsMeasure) {
    const ProgramRun result = run({"--title", "A <world>", world, page});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_LT(std::filesystem::file_size(page), 5000000u);
    EXPECT_LT(result.peakMemory, 120000);
    EXPECT_THAT(textOfFile(page), HasSubstr("<title>A &lt;world&gt;</title>"));
    EXPECT_EQ(run({"--title", "A <world>", world, folder / "again.html"}).status, 0);
    EXPECT_EQ(textOfFile(folder / "again.html"), textOfFile(page));
}

TEST_F(WebRun, GivesThePageAnEndingAndSaysWhereItIs) {
    const std::pair<const char *, const char *> cases[] = {
        {"x", "x.html"}, {"x.v2", "x.v2.html"}, {"p.htm", "p.htm"}, {"P.HTML", "P.HTML"}};
    for (const auto &[given, path] : cases) {
        const ProgramRun result = run({world, folder / given});
        EXPECT_EQ(result.status, 0);
        EXPECT_TRUE(
            result.logContains("The page is written to " + (folder / path).string() + "\n"));
        EXPECT_TRUE(std::filesystem::remove(folder / path)) << given;
    }
    for (const char *option : {"--old", "--plot"})
        EXPECT_EQ(run({option, "", world, page}).status, 2);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(WebRun, WhatThePageLacksIsSaidLastAndTheRestWritten) {
    const ProgramRun result = run({"--plot", folder / "none", world, page});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.logLines().back(),
                testing::EndsWith("none are missing: No such file or directory"));
    EXPECT_TRUE(std::filesystem::exists(page));
}

TEST_F(WebRun, WithoutLandNothingIsTouched) {
    std::ofstream(page) << "older";
    const std::string empty = folder / "empty";
    std::filesystem::create_directory(empty);
    const ProgramRun nothing = run({empty, page});
    EXPECT_EQ(nothing.status, 1);
    EXPECT_TRUE(nothing.logContains("client_cell_1.dat: no land block could be read"));
    const ProgramRun noOlder = run({"--old", empty, world, page});
    EXPECT_EQ(noOlder.status, 1);
    EXPECT_EQ(textOfFile(page), "older");
    const ProgramRun noPlace = run({world, folder / "missing/page.html"});
    EXPECT_EQ(noPlace.status, 1);
    EXPECT_TRUE(noPlace.logContains("No such file or directory"));
    const auto left = std::filesystem::directory_iterator(folder.path());
    EXPECT_EQ(std::distance(begin(left), end(left)), 2);
}
