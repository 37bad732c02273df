#include "OverlayCanvas.h"
#include "map/overlay/WQCompassOverlay.h"
#include "map/overlay/WQFeaturesBoxOverlay.h"
#include "map/overlay/WQGridOverlay.h"
#include "map/overlay/WQLowBitsOverlay.h"
#include "map/overlay/WQMarkerOverlay.h"
#include "map/overlay/WQTitleOverlay.h"
#include "map/overlay/WQTributeOverlay.h"

#include <algorithm>
#include <gtest/gtest.h>

// Where things are is reckoned here in whole cells and pixels: a coordinate of v units lies in cell
// 1019 + 10 v, whose middle pixel is that many times the scale plus half of it, rounded down.

namespace {

constexpr WQPixel kGround = OverlayCanvas::kGround;
constexpr WQPixel kLine{70, 70, 70, 255}, kBlack{0, 0, 0, 255}, kWhite{255, 255, 255, 255};
constexpr WQPixel kRed{255, 0, 0, 255};
/// Deep sea (147, 161, 176) under the canvas's light, of which flat ground gets 0.85355.
constexpr WQPixel kBlank{125, 137, 150, 255};

bool isMixed(WQPixel pixel, WQPixel a, WQPixel b, double shareOfA) {
    const auto isBetween = [&](int value, int x, int y) {
        return std::abs(value - (x * shareOfA + y * (1 - shareOfA))) <= 5;
    };
    return isBetween(pixel.red, a.red, b.red) && isBetween(pixel.green, a.green, b.green) &&
           isBetween(pixel.blue, a.blue, b.blue) && pixel.alpha == 255;
}

class OverlayGeometry : public testing::TestWithParam<int> {
  protected:
    const int scale = GetParam();
    const int half = scale / 2, size = 2041 * scale;
    OverlayCanvas canvas{static_cast<std::uint64_t>(scale)};

    /// The middle pixel of a coordinate in tenths of map units.
    int at(int tenths) const { return (1019 + tenths) * scale + half; }
    WQPixel pixel(int x, int y) const { return canvas.pixel(x, y); }
    void expect(WQPixel color, std::initializer_list<std::pair<int, int>> places) const {
        for (const auto &[x, y] : places)
            EXPECT_EQ(pixel(x, y), color) << x << ", " << y;
    }
    /// That a text stands at a place, or as much of it as the picture has room for.
    void expectText(const WQText &text, WQImagePoint place) {
        const int west = static_cast<int>(place.x), south = static_cast<int>(place.y);
        const int width = std::min(int(text.width()) + 2, size - west),
                  height = std::min(int(text.height()) + 2, size - south);
        if (width < 1 || height < 1)
            return;
        OverlayCanvas plain(static_cast<std::uint64_t>(scale));
        text.drawWithShadowAtPoint(place, plain.drawing);
        const auto expected = plain.pixels(west, south, width, height);
        const auto drawn = canvas.pixels(west, south, width, height);
        std::size_t white = 0, missing = 0;
        for (std::size_t index = 0; index < expected.size(); ++index) {
            white += expected[index] == kWhite;
            missing += expected[index] == kWhite && drawn[index] != kWhite;
        }
        EXPECT_GT(white, 20u) << place.x << ", " << place.y;
        EXPECT_EQ(missing, 0u) << place.x << ", " << place.y;
    }
};

INSTANTIATE_TEST_SUITE_P(Scales, OverlayGeometry, testing::Values(1, 2, 3, 8));

TEST_P(OverlayGeometry, LinesAndFrameOfTheGrid) {
    WQDrawGridLines(canvas.drawing, canvas.style);
    const int frame = scale == 8 ? 53 : scale == 3 ? 20 : scale == 2 ? 13 : 6;
    const auto lineOrGround = [&](int place) {
        const int distance = place - at(-1000);
        return distance >= 0 && place <= at(1000) && distance % (50 * scale) == 0 ? kLine : kGround;
    };
    // Across the map half-way between the lines at 0 and 5, where no label is.
    const auto row = canvas.row(at(25)), column = canvas.column(at(25));
    for (int place = 0; place < size; ++place) {
        const bool isFrame = place <= frame || place >= size - frame;
        const auto index = static_cast<std::size_t>(place);
        ASSERT_EQ(row[index], isFrame ? kWhite : lineOrGround(place)) << "x " << place;
        ASSERT_EQ(column[index], isFrame ? kBlack : lineOrGround(place)) << "y " << place;
    }
    // Along the middle of the frame.
    const auto bottom = canvas.row(frame / 2), top = canvas.row(size - 1 - frame / 2);
    const auto left = canvas.column(frame / 2), right = canvas.column(size - 1 - frame / 2);
    for (int place = 0; place < size; ++place) {
        const bool isInside = place >= at(-1000) && place < at(1000);
        const bool isEven = (place - at(-1000)) / (50 * scale) % 2 == 0;
        const auto index = static_cast<std::size_t>(place);
        const WQPixel across = isEven ? kBlack : kWhite, along = isEven ? kWhite : kBlack;
        ASSERT_EQ(bottom[index], isInside ? across : kGround) << "x " << place;
        // In the north-west the ground was blanked.
        if (place > at(-950)) {
            ASSERT_EQ(top[index], isInside ? across : kGround) << "x " << place;
        }
        if (place < at(950)) {
            ASSERT_EQ(left[index], isInside ? along : kGround) << "y " << place;
        }
        ASSERT_EQ(right[index], isInside ? along : kGround) << "y " << place;
    }
    // The lines' ends lie in the middle of a pixel, so that two cover three quarters of a corner.
    // At scale 1 a label may reach there.
    EXPECT_TRUE(scale == 1 || isMixed(pixel(at(-1000), at(-1000)), kLine, kGround, 0.75));
    EXPECT_EQ(pixel(at(-1000), at(-950)), kLine);
}

TEST_P(OverlayGeometry, BlankedCorners) {
    WQDrawGridLines(canvas.drawing, canvas.style);
    // 75N 75E to 100N 100E, whose edges are under grid lines; 65N 90E to 80N 95E; and what lies
    // north of 95N and west of 95W.
    expect(kBlank, {{at(750) + 1, at(750) + 1},
                    {at(1000) - 1, at(1000) - 1},
                    {at(900) + 1, at(650) + 1},
                    {at(950) - 1, at(750) - 1},
                    {0, size - 1},
                    {at(-950) - 1, at(950) + 1}});
    expect(kGround, {{at(750) - 1, at(750) + 1},
                     {at(750) + 1, at(750) - 1},
                     {at(1000) + 1, at(975)},
                     {at(900) - 1, at(650) + 1},
                     {at(900) + 1, at(650) - 1},
                     {at(950) + 1, at(650) + 1},
                     {at(-950) + 1, at(950) + 1},
                     {at(-950) - 1, at(950) - 1}});
    const int frame = scale * 20 / 3;
    // Outside of the grid half a pixel of the last area's edges shows.
    EXPECT_TRUE(isMixed(pixel(frame + 1, at(950)), kBlank, kGround, 0.5));
    EXPECT_TRUE(isMixed(pixel(at(-950), at(1000) + 1), kBlank, kGround, 0.5));
}

TEST_P(OverlayGeometry, Compass) {
    WQDrawCompass(canvas.drawing, canvas.style);
    const int x = at(875), y = at(325);
    // Clockwise quarter turns; at scale 1 the rose is cut off in the east.
    for (int turn = 0, u = 0, v = 1; turn < 4; ++turn) {
        // `along` the arm and to its `right`.
        const auto expectArm = [&](int along, int right, WQPixel color) {
            const int px = x + along * u + right * v, py = y + along * v - right * u;
            EXPECT_TRUE(px >= size || pixel(px, py) == color)
                << turn << ": " << along << ", " << right;
        };
        expectArm(100, 5, kBlack);
        expectArm(100, -5, kWhite);
        expectArm(30, 20, kBlack);
        expectArm(30, -20, kWhite);
        expectArm(60, 60, kWhite);  // diagonal star
        expectArm(96, 40, kBlack);  // inner ring: 104 from the centre
        expectArm(88, 66, kWhite);  // 110: between the rings
        expectArm(92, 69, kBlack);  // outer ring: 115
        expectArm(96, 72, kGround); // 120
        expectArm(150, 20, kGround);
        u = std::exchange(v, -u);
    }
}

/// Where the letters' boxes begin is reckoned from the tips of the rose's arms.
TEST_P(OverlayGeometry, LettersOfTheCompass) {
    WQDrawCompass(canvas.drawing, canvas.style);
    const double x = at(875) + 0.5, y = at(325) + 0.5;
    for (const char *letter : {"N", "E", "S", "W"}) {
        const WQText text = canvas.typesetter.set(letter, {kWQSansFamilies, 48, true});
        const double w = text.width(), h = text.height();
        const double middleX = std::floor(x - w / 2), middleY = std::floor(y - h / 2);
        expectText(text, *letter == 'N'   ? WQImagePoint{middleX, y + 195}
                         : *letter == 'E' ? WQImagePoint{x + 205, middleY}
                         : *letter == 'S' ? WQImagePoint{middleX, y - 195 - h}
                                          : WQImagePoint{x - 205 - w, middleY});
    }
}

TEST_P(OverlayGeometry, LinesOfTheTitle) {
    WQDrawTitle(canvas.drawing, canvas.style);
    const double x = at(710) + 2.5, y = at(898) - 1.5;
    const auto set = [this](const char *text, const char *families, double height) {
        return canvas.typesetter.set(text, {families, height, true});
    };
    expectText(set("Ostvale", kWQSerifFamilies, 240), {x, y});
    expectText(set("Map Created By:", kWQWideSansFamilies, 25), {x + 50, y - 45});
    expectText(set("Brannock of Tillmere", kWQWideSansFamilies, 48), {x + 50, y - 105});
}

TEST_P(OverlayGeometry, TributeAndTitleLeaveOneRow) {
    WQDrawTitle(canvas.drawing, canvas.style);
    WQDrawTribute(canvas.drawing, canvas.style);
    const int west = at(750), east = at(950), row = at(800);
    expect(kBlank, {{west + 1, row + 1},
                    {west + 1, row - 1},
                    {west + 3, row + 1},
                    {west + 3, row - 1},
                    {west + 1, at(750) + 1},
                    {at(700) + 1, row + 1}});
    expect(kGround, {{west + 1, row},
                     {west + 3, row},
                     {west, row - 1},
                     {east, row - 2 * scale},
                     {west + 1, at(750)},
                     {at(700), row + 1}});
    // At scale 1 the credit may reach that far.
    if (scale > 1) {
        expect(kBlank, {{east - 1, row + 1}, {east - 1, row - 1}});
        expect(kGround, {{east - 1, row}});
    }
}

TEST_P(OverlayGeometry, FeaturesBoxHasAnOutlineOfOnePixel) {
    WQDrawFeaturesBox(canvas.drawing, canvas.style);
    // At odd scales the coordinate's half unit puts the outline on the middle of a pixel, at even
    // ones between two.
    const int x = (1019 * 2 + 1575) * scale / 2 + half, y = at(520);
    const double shareOutside = scale % 2 == 0 ? 0.5 : 0, shareInside = scale % 2 == 0 ? 0.5 : 1;
    EXPECT_TRUE(isMixed(pixel(x - 1, y), kBlack, kGround, shareOutside));
    EXPECT_TRUE(isMixed(pixel(x, y), kBlack, kBlank, shareInside));
    expect(kGround, {{x - 2, y}});
    expect(kBlank, {{x + 1, y}});
}

TEST_P(OverlayGeometry, MarkerIsAsLargeAtEveryScale) {
    WQMarkerOverlay markers(canvas.drawing, canvas.style);
    markers.drawMarkerAtCoordinate({57.0, -24.2});
    const int x = at(570), y = at(-242);
    for (const auto &[a, b] : {std::pair{3, 4}, {-4, 3}, {-3, -4}, {4, -3}}) {
        EXPECT_EQ(pixel(x + a, y + b), kRed);           // 5 from the centre
        EXPECT_EQ(pixel(x + 2 * a, y + 2 * b), kBlack); // 10
        EXPECT_EQ(pixel(x + 3 * a, y + 3 * b), kGround);
    }
    EXPECT_EQ(pixel(x + 8, y), kRed);
    EXPECT_TRUE(isMixed(pixel(x + 9, y), kBlack, kRed, 0.5));
    EXPECT_TRUE(isMixed(pixel(x + 11, y), kBlack, kGround, 0.5));
}

TEST(OverlayLowBits, PointsWithBothRoadBitsAreMarked) {
    const auto grid = WQLandGrid::allocate();
    grid->at(500, 600) = {0x53, 0, WQLandPoint::hasData};
    grid->at(700, 600) = {0x53, 0, 0};
    grid->at(900, 600) = {0x52, 0, WQLandPoint::hasData};
    OverlayCanvas canvas(1);
    WQHighlightLowBits(*grid, canvas.drawing);
    // The centre is a corner between four pixels.
    EXPECT_TRUE(canvas.pixel(496, 600) == kRed && canvas.pixel(503, 600) == kRed);
    EXPECT_TRUE(canvas.pixel(494, 600) == kGround && canvas.pixel(505, 600) == kGround);
    EXPECT_TRUE(canvas.pixel(700, 600) == kGround && canvas.pixel(900, 600) == kGround);
}

} // namespace
