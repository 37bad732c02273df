#include "map/land/WQLandColorTable.h"
#include "map/land/WQMapColorScheme.h"
#include "tests/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

TEST(MapColorScheme, ColorsStandAtTheirTerrainCodes) {
    const WQMapColorScheme scheme;
    const auto names = WQMapColorScheme::colorKeyPaths();
    EXPECT_EQ(names[0], "barrenRockColor");
    EXPECT_EQ(names[15], "snowColor");
    EXPECT_EQ(names[31], "desolateLandsColor");
    EXPECT_EQ(names[32], "roadColor");

    const auto colors = scheme.colors();
    EXPECT_EQ(colors[15], scheme.snowColor());
    EXPECT_EQ(colors[32], scheme.roadColor());

    // What the renderer makes of the defaults, summed: a slip in any of them shows.
    int red = 0, green = 0, blue = 0;
    for (const WQColor &color : colors) {
        red += static_cast<int>(color.red * 255.0);
        green += static_cast<int>(color.green * 255.0);
        blue += static_cast<int>(color.blue * 255.0);
        EXPECT_EQ(color.alpha, 1.0);
    }
    EXPECT_EQ(red, 6123);
    EXPECT_EQ(green, 6026);
    EXPECT_EQ(blue, 5209);
}

TEST(MapColorScheme, ColorArrayFollowsOnlyWhenUpdated) {
    WQMapColorScheme scheme;
    const WQColorVector &deepSea = scheme.colorArray()[20];
    EXPECT_EQ(deepSea.red, 0.472335f);
    EXPECT_EQ(deepSea.blue, 0.747975f);
    EXPECT_EQ(deepSea.alpha, 1.0f);

    const WQColor changed{0.1, 0.2, 0.3, 0.4};
    scheme.setDeepSeaColor(changed);
    EXPECT_EQ(scheme.colors()[20], changed);
    EXPECT_EQ(deepSea.red, 0.472335f);
    scheme.updateColorArray();
    EXPECT_EQ(deepSea.red, 0.1f);
    EXPECT_EQ(deepSea.alpha, 0.4f);
}

TEST(LandColorTable, LogsEachColor) {
    WQLandColorTable table;
    table.updateLandColors(WQMapColorScheme());
    CapturedLog captured;
    table.dumpColors();
    const std::string log = captured.take();
    EXPECT_EQ(countOf(log, "foo = [NSColor colorWithSRGBRed:"), 33u);
    // Barren rock, (206, 177, 124).
    EXPECT_NE(log.find("-[WQMapper dumpColors]\n"), log.npos);
    EXPECT_NE(log.find("Red:0.807843 green:0.690196 blue:0.486275 alpha:1.0]; // 0\n"), log.npos)
        << log;
}

TEST(MapColorScheme, LogsLinesThatCanBePasted) {
    WQMapColorScheme scheme;
    scheme.setRoadColor({1, 0.5, 0, 0.25});
    CapturedLog captured;
    scheme.logColors();
    const std::string log = captured.take();

    EXPECT_NE(log.find("] color data:\n"
                       "_barrenRockColor         = [NSColor colorWithSRGBRed:0.809365 "
                       "green:0.692823 blue:0.487465 alpha:1.0]; // 0\n"),
              log.npos)
        << log;
    EXPECT_TRUE(log.ends_with("_roadColor               = [NSColor colorWithSRGBRed:1.000000 "
                              "green:0.500000 blue:0.000000 alpha:0.2]; // 32\n\n"))
        << log;
    EXPECT_EQ(std::ranges::count(log, '\n'), 35);
}

} // namespace
