// Runs that read no land: the picture is made all the same, and the last line says what was wrong.

#include "tests/PatchedWorld.h"
#include "tests/ProgramRun.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace {

std::size_t countColors(const DecodedPNG &picture) {
    std::size_t count = 1;
    for (std::size_t offset = picture.bytesPerPixel; offset < picture.bytes.size();
         offset += picture.bytesPerPixel)
        count += !std::equal(picture.pixel(0, 0), picture.pixel(0, 0) + picture.bytesPerPixel,
                             &picture.bytes[offset]);
    return count;
}

} // namespace

TEST(NothingRead, IsTheLastThingThatIsSaid) {
    const TemporaryFolder folder;
    const std::string world = PLOTTERRA_SAMPLE_WORLD, missing = folder / "missing";
    const std::string reason =
        missing + "/client_cell_1.dat cannot be opened: No such file or directory";
    const std::string noLand = "The picture shows no land: " + reason;
    const std::string allAdded = "All land counts as added: " + reason;
    const auto lastLine = [&](std::vector<std::string> words) {
        words.insert(words.begin(), PLOTTERRA_PROGRAM);
        words.push_back(folder / "map");
        const ProgramRun result = runProgram(words);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.log.find("-nan"), std::string::npos);
        return result.logLines().back();
    };
    for (const auto &words : std::vector<std::vector<std::string>>{
             {missing}, {"-h", missing}, {"--old", missing, missing}}) {
        EXPECT_EQ(lastLine(words), noLand);
        EXPECT_EQ(countColors(decodePNG(folder / "map.png")), 1u);
    }
    EXPECT_EQ(lastLine({"--old", missing, "--save-changes", folder / "list", world}), allAdded);
    EXPECT_NE(lastLine({"-h", "--old", missing, world}), allAdded);

    // Arguments the wrong way round.
    const ProgramRun swapped = runProgram({PLOTTERRA_PROGRAM, folder / "map.png", folder.path()});
    EXPECT_EQ(swapped.logLines().back(),
              (folder / "map.png").string() + " is no directory, but " + folder.path().string() +
                  " is one: the directory with the archives comes first, then the picture.");
    std::filesystem::remove(folder.path().string() + ".png");

    // Without a picture there is nothing to say of it.
    const ProgramRun unsaved = runProgram({PLOTTERRA_PROGRAM, missing, folder / "no folder/map"});
    EXPECT_TRUE(unsaved.logLines().back().starts_with("error saving map: "));
}

TEST(NothingRead, HeightsThatAreNoNumbersAreSaidAtTheEnd) {
    const TemporaryFolder folder;
    const std::string world =
        patchedWorld(folder / "world", PLOTTERRA_SAMPLE_WORLD, [](std::string &portal) {
            patchLandHeight(portal, 4, std::numeric_limits<float>::quiet_NaN());
        });
    const ProgramRun run = runProgram({PLOTTERRA_PROGRAM, world, folder / "map"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.logLines().back(),
              "1 of the 256 land heights in the region record (13000000) are no finite numbers, "
              "first that of index 4; they are taken to be 0");
}

TEST(NothingRead, WhatAPictureLacksIsSaidAtTheEnd) {
    const TemporaryFolder folder;
    const std::string cells = folder / "cells", plot = folder / "plot.txt";
    std::filesystem::create_directory(cells);
    std::filesystem::create_symlink(PLOTTERRA_SAMPLE_WORLD "/client_cell_1.dat",
                                    cells + "/client_cell_1.dat");
    std::ofstream(plot) << "a;1N 2E;A\nb;nowhere;B\nc;300N 2E;Far\n";
    const auto lastLines = [&](const std::string &places, std::size_t count) {
        const auto lines =
            runProgram({PLOTTERRA_PROGRAM, "--plot", places, cells, folder / "map"}).logLines();
        return std::vector<std::string>(lines.end() - static_cast<long>(count), lines.end());
    };
    const std::string flat = "The land is drawn as if it were flat: " + cells +
                             "/client_portal.dat cannot be opened: No such file or directory";
    EXPECT_EQ(lastLines(plot, 3),
              (std::vector{"1 of 4 lines in " + plot + " make no place, first line 2", flat,
                           std::string("1 of 2 places lie off the world, first Far")}));
    EXPECT_EQ(lastLines(folder / "none", 2),
              (std::vector{"The places of " + (folder / "none").string() +
                               " are missing: No such file or directory",
                           flat}));
}
