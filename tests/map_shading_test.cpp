#include "map/land/WQLandShading.h"
#include "map/land/WQMapViewport.h"
#include "tests/ReferenceShading.h"

#include <gtest/gtest.h>
#include <random>

namespace {

constexpr ZPVector3 kLight = {-0.5f, 0.5f, 0.707107f};

std::unique_ptr<WQLandGrid> landWithHeights() {
    auto grid = WQLandGrid::allocate();
    std::array<float, 256> heights;
    for (std::size_t index = 0; index < heights.size(); ++index)
        heights[index] = static_cast<float>(index * index) / 37.0f;
    grid->setLandHeights(heights);
    return grid;
}

std::unique_ptr<WQLandGrid> roughLand() {
    auto grid = landWithHeights();
    std::mt19937 random(7);
    for (unsigned y = 0; y < kWQLandSize; ++y)
        for (unsigned x = 0; x < kWQLandSize; ++x) {
            const bool isAbsent = (x / 200 + y / 300) % 5 == 0 || random() % 50 == 0;
            if (!isAbsent)
                grid->at(x, y) = {
                    static_cast<std::uint16_t>(random()), static_cast<std::uint8_t>(random() % 256),
                    static_cast<std::uint8_t>(1 | (random() % 8 == 0 ? random() : 0))};
        }
    return grid;
}

/// Whole but for some blocks, to the east and to the west of each sixteenth column of blocks: what
/// looks for holes by stretches of a row must look beyond a stretch's ends.
std::unique_ptr<WQLandGrid> landWithHoles() {
    auto grid = landWithHeights();
    std::mt19937 random(11);
    for (unsigned y = 0; y < kWQLandSize; ++y)
        for (unsigned x = 0; x < kWQLandSize; ++x) {
            const unsigned row = y / 8, column = x / 8 % 16;
            const bool isInside = x % 8 != 0 && y % 8 != 0;
            if (!isInside || column != (row % 2 == 0 ? 15 : 0))
                grid->at(x, y) = {static_cast<std::uint16_t>(random()),
                                  static_cast<std::uint8_t>(random() % 256), WQLandPoint::hasData};
        }
    return grid;
}

class TerrainShaderAgrees : public testing::TestWithParam<std::unique_ptr<WQLandGrid> (*)()> {};

INSTANTIATE_TEST_SUITE_P(, TerrainShaderAgrees, testing::Values(&roughLand, &landWithHoles));

} // namespace

TEST_P(TerrainShaderAgrees, WithVectorArithmetic) {
    WQLandColorTable::shared().updateLandColors(WQMapColorScheme());
    const auto grid = GetParam()();
    // The last from so low that many slopes get none of it.
    constexpr ZPVector3 kFromBelow = {-1, 1, -2};
    for (const bool usesAlpha : {false, true})
        for (const bool marksChanges : {false, true})
            for (const auto &[light, fudge] :
                 {std::pair{kLight, 255.0f}, {kLight, 400.0f}, {kFromBelow, 255.0f}}) {
                const WQTerrainShader::Settings settings = {WQNormalizedVector(light), fudge,
                                                            usesAlpha, marksChanges};
                const ReferenceShading reference{*grid, settings};
                const WQTerrainShader shader(WQLandColorTable::shared(), settings);
                std::array<WQPixel, kWQLandSize> row;
                for (const unsigned y : {0u, 1u, 299u, 300u, 1234u, 2039u, 2040u}) {
                    const WQLightRange range = shader.shadeRow(WQLandWindow(*grid, y, y + 1), row);
                    WQLightRange expected;
                    std::size_t wrong = 0;
                    for (int x = 0; x < int(kWQLandSize); ++x) {
                        wrong += !(row[unsigned(x)] == reference.pixel(x, int(y)));
                        const double d =
                            reference.hasData(x, int(y)) ? reference.diffuse(x, int(y)) : NAN;
                        expected.minimum = d < expected.minimum ? d : expected.minimum;
                        expected.maximum = d > expected.maximum ? d : expected.maximum;
                    }
                    EXPECT_EQ(wrong, 0u) << "row " << y;
                    EXPECT_EQ(range.minimum, expected.minimum);
                    EXPECT_EQ(range.maximum, expected.maximum);
                }
            }
}

TEST(TerrainShader, NormalsAreThoseOfTheTrianglesAroundAPoint) {
    const auto grid = landWithHeights();
    const auto raise = [&](unsigned x, unsigned y, unsigned height) {
        grid->at(x, y) = {0, static_cast<std::uint8_t>(height), WQLandPoint::hasData};
    };
    const auto at = [&](unsigned x, unsigned y) {
        const WQLandPoint &point = grid->at(x, y);
        return grid->elevation(point);
    };
    for (const auto &[x, y] : {std::pair{10u, 20u}, {9u, 20u}, {11u, 20u}, {10u, 19u}, {10u, 21u}})
        raise(x, y, x * 3 + y);
    raise(11, 20, 200);
    raise(10, 21, 90);
    const float west = at(9, 20) - at(10, 20), east = at(11, 20) - at(10, 20);
    const float south = at(10, 19) - at(10, 20), north = at(10, 21) - at(10, 20);
    const auto expectNormal = [&](ZPVector3 sum) {
        const ZPVector3 wanted = WQNormalizedVector(sum);
        const ZPVector3 normal = WQTerrainShader::calculateNormal(*grid, 10, 20);
        EXPECT_NEAR(normal.x, wanted.x, 1e-5);
        EXPECT_NEAR(normal.y, wanted.y, 1e-5);
        EXPECT_NEAR(normal.z, wanted.z, 1e-5);
    };
    // Each triangle gives its slopes, and they add up.
    expectNormal({2 * west - 2 * east, 2 * south - 2 * north, 4});
    grid->at(9, 20).flags = 0;
    expectNormal({-2 * east, south - north, 2});
    grid->at(10, 21).flags = 0;
    expectNormal({-east, south, 1});
}

TEST(TerrainShader, LightsFlatLandAndLonePoints) {
    WQLandColorTable::shared().updateLandColors(WQMapColorScheme());
    auto grid = WQLandGrid::allocate();
    for (unsigned y = 10; y < 20; ++y)
        for (unsigned x = 10; x < 20; ++x)
            grid->at(x, y) = {0, 50, WQLandPoint::hasData};
    grid->at(100, 15) = {0, 50, WQLandPoint::hasData}; // no neighbour: no normal
    grid->at(12, 15).terrainWord = 40 << 2;            // no such terrain
    grid->at(13, 15).terrainWord = 0x51;               // road
    const WQTerrainShader shader(WQLandColorTable::shared(),
                                 {WQNormalizedVector(kLight), 255, true, false});
    std::array<WQPixel, kWQLandSize> row;
    const WQLightRange range = shader.shadeRow(WQLandWindow(*grid, 15, 15 + 1), row);
    EXPECT_NEAR(range.minimum, 0.85355, 1e-5);
    EXPECT_EQ(row[11], (WQPixel{175, 150, 105, 255}));
    EXPECT_EQ(row[12], (WQPixel{255, 0, 0, 255}));
    EXPECT_EQ(row[13], (WQPixel{190, 182, 168, 255}));
    EXPECT_EQ(row[100], (WQPixel{0, 0, 0, 255}));
    EXPECT_EQ(row[9], (WQPixel{0, 0, 0, 0}));
}

TEST(LandShading, InPlaceIsTheSameAsApart) {
    auto grid = roughLand();
    const WQTerrainShader shader(WQLandColorTable::shared(),
                                 {WQNormalizedVector(kLight), 255, false, true});
    std::vector<WQPixel> expected;
    WQLightRange light;
    std::array<WQPixel, kWQLandSize> row;
    for (WQLandWindow window(*grid, 0, kWQLandSize); window.y() < kWQLandSize; window.moveNorth()) {
        light.include(shader.shadeRow(window, row));
        expected.insert(expected.end(), row.begin(), row.end());
    }
    const WQShadedLand land = WQShadeLand(std::move(grid), shader);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), land.pixels.data()));
    EXPECT_EQ(land.light.minimum, light.minimum);
    EXPECT_EQ(land.light.maximum, light.maximum);
}

TEST(LandHeights, TakesHeightsAndLandTypesSafely) {
    auto grid = WQLandGrid::allocate();
    std::array<float, 256> heights{};
    heights[1] = 12.9f;
    heights[2] = -1.5f;
    heights[3] = 70000.0f;
    heights[4] = NAN;
    heights[5] = 1e30f;
    grid->setLandHeights(heights);
    const std::uint16_t expected[] = {0, 12, 0xFFFF, 4464, 0, 0};
    for (std::uint8_t index = 0; index < 6; ++index)
        EXPECT_EQ(grid->height({0, index, 0}), expected[index]) << int(index);
    EXPECT_EQ(grid->elevation({0, 1, 0}), 1.0f);

    grid->at(2040, 2040).terrainWord = 0x02;
    grid->at(0, 0).terrainWord = 7 << 2;
    EXPECT_EQ(grid->landTypeAtPoint(2040.9, 2040), 32u);
    EXPECT_EQ(grid->landTypeAtPoint(-0.5, 0), 7u);
    for (const double outside : {2041.0, -1.0, 1e300, double(NAN)})
        EXPECT_EQ(grid->landTypeAtPoint(outside, 0), 20u);
}

TEST(MapViewport, ShowsItsPartOfTheLand) {
    auto grid = roughLand();
    const WQTerrainShader shader(WQLandColorTable::shared(),
                                 {WQNormalizedVector(kLight), 255, true, false});
    WQMapViewport viewport;
    viewport.updateTypes(*grid);
    EXPECT_EQ(viewport.types()[3 * 512 + 5], grid->at(5, 3).landType());
    viewport.xOffset = 1900;
    viewport.yOffset = 2000;
    viewport.updateBitmap(*grid, shader);
    std::array<WQPixel, kWQLandSize> row;
    shader.shadeRow(WQLandWindow(*grid, 2001, 2001 + 1), row);
    const auto bitmap = viewport.bitmap();
    EXPECT_TRUE(std::equal(row.begin() + 1900, row.end(), bitmap.begin() + 510 * 512));
    EXPECT_EQ(bitmap[510 * 512 + 141], WQPixel{}); // east of the world
    EXPECT_EQ(bitmap[0], WQPixel{});               // north of it
}
