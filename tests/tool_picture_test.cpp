// The program's picture of the sample world, point by point against one that is reckoned without
// any of the program's shortcuts.

#include "map/land/WQLandGridBuilder.h"
#include "tests/ProgramRun.h"
#include "tests/ReferenceShading.h"
#include "tests/TestSupport.h"

#include <cstring>
#include <gtest/gtest.h>

TEST(SamplePicture, IsToThePointWhatVectorArithmeticGives) {
    const TemporaryFolder folder;
    const std::string world = PLOTTERRA_SAMPLE_WORLD;
    ASSERT_EQ(runProgram({PLOTTERRA_PROGRAM, "-a", world, folder / "map"}).status, 0);
    ASSERT_EQ(runProgram({PLOTTERRA_PROGRAM, "-h", world, folder / "heights"}).status, 0);
    const DecodedPNG map = decodePNG(folder / "map.png");
    const DecodedPNG heights = decodePNG(folder / "heights.png");

    WQClientData clientData(world);
    clientData.cellDataFile()->loadFileEntriesIfNecessary();
    const auto grid = WQLandGrid::allocate();
    grid->setLandHeights(clientData.worldInfo()->actualLandHeights());
    WQFillLandGrid(*grid, *clientData.cellDataFile(), nullptr);
    WQLandColorTable::shared().updateLandColors(WQMapColorScheme());
    const ReferenceShading reference{
        *grid, {WQNormalizedVector({-0.5f, 0.5f, 0.707107f}), 255, true, false}};

    std::size_t wrong = 0, wrongHeights = 0;
    for (unsigned y = 0; y < kWQLandSize; ++y)
        for (unsigned x = 0; x < kWQLandSize; ++x) {
            const WQPixel expected = reference.pixel(static_cast<int>(x), static_cast<int>(y));
            const unsigned row = kWQLandSize - 1 - y;
            wrong += std::memcmp(map.pixel(x, row), &expected, sizeof expected) != 0;
            wrongHeights += *heights.pixel(x, row) != grid->at(x, y).heightIndex;
        }
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(wrongHeights, 0u);
}
