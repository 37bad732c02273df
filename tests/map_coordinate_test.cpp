#include "game/WQMapCoordinate.h"
#include "io/ZPPointText.h"
#include "tests/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(MapCoordinate, ReadsEveryAcceptedForm) {
    const double y24 = 24.2f, y12 = 12.3f, x45 = 45.6f;
    const std::string zeros(5000, '0');
    const struct {
        std::string text;
        double x, y;
    } cases[] = {
        {"24.2S 57.0E", 57, -y24},
        {"24.2s, 57.0e", 57, -y24},
        {" \t24.2\n S ,\r\n57.0 E", 57, -y24},
        {"24.2S57.0E", 57, -y24},
        {"-24.2S +57E", 57, y24},
        {"24.2SS 57.0WW", 57, y24},
        {"0N 0E", 0, 0},
        {"12.3N, 45.6E and further words", x45, y12},
        {"12.3N 45.6Ew", x45, y12},
        {".5n 5.w", -5, 0.5},
        {"1e1N 2.5E+1E", 25, 10},
        {"1E-2N 5E-W", 5, 0.01f},
        {"4e38N 1e99999999999999999999W", -infinity, infinity},
        {"1e-46N -1e-99999999999999999999E", 0, 0},
        {"1" + zeros + "N 0." + zeros + "1E", 0, infinity},
        {"1" + zeros + "e-5000N 0." + zeros + "1e5001E", 1, 1},
        {"0e99999999999N " + zeros + "7E", 7, 0},
        {"1e9223372036854775807N 1e-9223372036854775808E", 0, infinity},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text.substr(0, 60));
        CapturedLog captured;
        WQMapLocation location{-1, -1};
        EXPECT_TRUE(WQMapCoordinateFromString(c.text, &location));
        EXPECT_EQ(captured.take(), "");
        EXPECT_EQ(location.x, c.x);
        EXPECT_EQ(location.y, c.y);
    }
    EXPECT_TRUE(WQMapCoordinateFromString("24.2S 57.0E", nullptr));
}

TEST(MapCoordinate, FailureNamesTheMissingPartAndKeepsTheRest) {
    const double y24 = 24.2f;
    const char *const noNorthSouthNumber = "Failed to scan float: North/South map coordinate: '";
    const char *const noNorthSouth = "Failed to scan north/south part of map coordinate: '";
    const char *const noEastWestNumber = "Failed to scan float: East/West map coordinate: '";
    const char *const noEastWest = "Failed to scan east/west part of map coordinate: '";
    const struct {
        const char *text;
        const char *message;
        double x, y;
        const char *point;
    } cases[] = {
        {"", noNorthSouthNumber, 0, 0, "{0, 0}"},
        {"S 57.0E", noNorthSouthNumber, 0, 0, "{0, 0}"},
        {"nan N 1E", noNorthSouthNumber, 0, 0, "{0, 0}"},
        {"inf N 1E", noNorthSouthNumber, 0, 0, "{0, 0}"},
        {"-.N 1E", noNorthSouthNumber, 0, 0, "{0, 0}"},
        {"0x1p3N 1E", noNorthSouth, 0, 0, "{0, 0}"},
        {"24.2X 57.0E", noNorthSouth, 0, y24, "{0, 24.200000762939453}"},
        {"24.2 57.0", noNorthSouth, 0, y24, "{0, 24.200000762939453}"},
        {"24.2S", noEastWestNumber, 0, -y24, "{0, -24.200000762939453}"},
        {"24.2S,,57.0E", noEastWestNumber, 0, -y24, "{0, -24.200000762939453}"},
        {"24.5S 57.0", noEastWest, 57, -24.5, "{57, -24.5}"},
        {"24.5S 5.0E1", noEastWest, 50, -24.5, "{50, -24.5}"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        const std::string text = c.text;
        CapturedLog captured;
        WQMapLocation location{-1, -1};
        EXPECT_FALSE(WQMapCoordinateFromString(text, &location));
        EXPECT_FALSE(WQMapCoordinateFromString(text, nullptr));
        const std::string log = captured.take();
        EXPECT_NE(log.find("] " + (c.message + text) + "'\n"), log.npos) << log;
        EXPECT_NE(log.find("] " + text + " => " + c.point + "\n"), log.npos) << log;
        EXPECT_EQ(location.x, c.x);
        EXPECT_EQ(location.y, c.y);
    }
}

TEST(MapCoordinate, PrintsWithTheHemisphereOfTheSign) {
    EXPECT_EQ(WQStringFromMapCoordinate({57.0, -24.2}), " 24.2S  57.0E");
    EXPECT_EQ(WQStringFromMapCoordinate({0, 0}), "  0.0N   0.0E");
    EXPECT_EQ(WQStringFromMapCoordinate({101.9, -0.04}), "  0.0S 101.9E");
    EXPECT_EQ(WQPreciseStringFromMapCoordinate({-1.5, 2}), "2.00000N 1.50000W");
}

TEST(MapCoordinate, CellCornerFromIdentifier) {
    const struct {
        std::uint32_t cellID;
        double x, y;
    } cases[] = {
        {0x1234000A, -87.4, -60.2},   {0x12340000, -87.5, -60.3},  {0x12340100, -87.5, -60.3},
        {0x12340040, -86.8, -59.6},   {0x12340041, -87.5, -60.3},  {0x1234FFFF, -87.5, -60.3},
        {0x00000001, -101.9, -101.9}, {0xFE00FFFF, 101.3, -101.9},
    };
    for (const auto &c : cases) {
        const WQMapLocation location = WQMapCoordinateForCellID(c.cellID);
        EXPECT_NEAR(location.x, c.x, 1e-12) << std::hex << c.cellID;
        EXPECT_NEAR(location.y, c.y, 1e-12) << std::hex << c.cellID;
    }
}

TEST(PointText, ShortestNumbersInBraces) {
    EXPECT_EQ(ZPStringFromPoint(-24.2, 16328), "{-24.2, 16328}");
    EXPECT_EQ(ZPStringFromRect(0.1, 1e-300, 2041, infinity), "{{0.1, 1e-300}, {2041, inf}}");
}

} // namespace
