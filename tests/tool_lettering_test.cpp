#include "map/overlay/WQLetteringLibrary.h"
#include "tests/ProgramRun.h"
#include "tests/TestSupport.h"

#include <gmock/gmock.h>
#include <regex>

namespace {

/// A program that was moved draws shapes and labels with the library that was moved along, and
/// without one a map that has all but these.
TEST(InstalledProgram, FindsItsLibraryFromItsOwnPlace) {
    const TemporaryFolder folder;
    const auto program = folder / "bin" / "Plotterra";
    std::filesystem::create_directory(folder / "bin");
    std::filesystem::copy_file(PLOTTERRA_PROGRAM, program);
    const auto draw = [&](const std::string &name) {
        return runProgram({program, "-g", PLOTTERRA_SAMPLE_WORLD, folder / name});
    };

    const ProgramRun bare = draw("bare");
    EXPECT_EQ(bare.status, 0);
    std::vector<std::filesystem::path> tried;
    const std::regex line("shapes and labels are missing on the map: ([^:]+): [^\n]*No such file");
    for (auto match = std::sregex_iterator(bare.log.begin(), bare.log.end(), line);
         match != std::sregex_iterator(); ++match)
        tried.emplace_back((*match)[1].str());
    ASSERT_EQ(tried.size(), 2u) << bare.log;
    EXPECT_EQ(tried[0], folder / "bin" / kWQLetteringLibraryName);
    EXPECT_EQ(tried[1].string().find((folder / "lib").string()), 0u) << tried[1];

    std::filesystem::create_directories(tried[1].parent_path());
    std::filesystem::copy_file(
        std::filesystem::path(PLOTTERRA_PROGRAM).parent_path() / kWQLetteringLibraryName, tried[1]);
    const ProgramRun whole = draw("whole");
    EXPECT_EQ(whole.status, 0);
    EXPECT_THAT(whole.log, testing::Not(testing::HasSubstr("missing")));
    // West of the middle of the compass's northern point.
    const DecodedPNG without = decodePNG(folder / "bare.png"),
                     with = decodePNG(folder / "whole.png");
    const unsigned column = 1894 - 5, row = 2040 - 1344 - 100;
    const std::uint8_t white[] = {255, 255, 255, 255};
    EXPECT_TRUE(std::equal(white, white + 4, with.pixel(column, row)));
    EXPECT_FALSE(std::equal(white, white + 4, without.pixel(column, row)));
}

} // namespace
