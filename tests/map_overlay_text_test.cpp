#include "OverlayCanvas.h"
#include "map/overlay/WQGridOverlay.h"
#include "map/overlay/WQLetteringLibrary.h"
#include "map/overlay/WQMarkerOverlay.h"
#include "tests/TestSupport.h"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>

namespace {

using testing::ContainsRegex;
using testing::ElementsAre;

constexpr WQPixel kGround = OverlayCanvas::kGround;
constexpr WQPixel kBlack{0, 0, 0, 255}, kWhite{255, 255, 255, 255};
constexpr WQFont kFont{kWQSansFamilies, 12};

class OverlayText : public testing::Test {
  protected:
    double widthOf(const std::string &text) { return canvas.typesetter.set(text, kFont).width(); }
    /// What a text looks like, black on plain ground.
    std::vector<WQPixel> pictureOf(const std::string &text) {
        OverlayCanvas plain(1);
        canvas.typesetter.set(text, kFont).drawAtPoint({20, 100}, kBlack, plain.drawing);
        return plain.pixels(0, 80, 300, 60);
    }

    OverlayCanvas canvas{1};
};

TEST_F(OverlayText, IsCutAndHasBlanksForControls) {
    EXPECT_EQ(widthOf(std::string(500, 'm')), widthOf(std::string(100'000, 'm')));
    EXPECT_LT(widthOf(std::string(499, 'm')), widthOf(std::string(500, 'm')));
    // Characters are counted, not bytes.
    std::string omegas;
    for (int index = 0; index < 500; ++index)
        omegas += "Ω";
    EXPECT_EQ(widthOf(omegas), widthOf(omegas + "Ω"));
    EXPECT_GT(widthOf(omegas), 490 * widthOf("Ω"));

    for (const std::string control : {"\t", "\n", "\x7F", "\x1B", "\u0085", "\u009F", "\u2028"})
        EXPECT_EQ(pictureOf("Two" + control + "words"), pictureOf("Two words"));
    EXPECT_EQ(pictureOf(std::string("Two\0words", 9)), pictureOf("Two words"));
    // These are no controls, though their first bytes are those of some.
    EXPECT_NE(pictureOf("Two£words"), pictureOf("Two words"));
    EXPECT_NE(pictureOf("Two…words"), pictureOf("Two words"));
    // Half a character at the end, and nothing but what is cut off.
    EXPECT_EQ(widthOf("Two\xC2"), 0);
    EXPECT_EQ(widthOf("\r\r"), 0);
}

/// The numbers of the frame at scale 1: less hinting squashes them to five rows.
TEST_F(OverlayText, SmallDigitsAreSixRowsHigh) {
    OverlayCanvas plain(1);
    canvas.typesetter.set("0235689", {kWQSansFamilies, 8})
        .drawAtPoint({20, 100}, kBlack, plain.drawing);
    int rows = 0;
    for (int y = 90; y < 110; ++y)
        rows += std::ranges::count(plain.pixels(15, y, 60, 1), kGround) < 60;
    EXPECT_EQ(rows, 6);
}

TEST_F(OverlayText, ShadowLiesUnderTheLetters) {
    for (const double size : {12.0, 48.0}) {
        OverlayCanvas lit(1), letters(1);
        const WQText text = lit.typesetter.set("Ostvale", {kWQSansFamilies, size, true});
        text.drawWithShadowAtPoint({100, 100}, lit.drawing);
        text.drawAtPoint({100, 100}, kWhite, letters.drawing);
        const int width = int(text.width()) + 20, height = int(text.height()) + 20;
        const auto picture = lit.pixels(90, 90, width, height);
        const auto expected = letters.pixels(90, 90, width, height);
        std::size_t white = 0, black = 0, wrong = 0;
        for (std::size_t index = 0; index < picture.size(); ++index) {
            white += expected[index] == kWhite;
            wrong += expected[index] == kWhite && picture[index] != kWhite;
            // To the south-east of full ink, where no letter is.
            const std::size_t northWest = index - std::size_t(width) - 1;
            const bool isShadow = index > std::size_t(width) && expected[northWest] == kWhite &&
                                  expected[index] == kGround;
            black += isShadow;
            wrong += isShadow && picture[index] != kBlack;
        }
        EXPECT_EQ(wrong, 0u) << size;
        EXPECT_GT(white, 20u) << size;
        // Few at the small size, and how few is the rasteriser's affair.
        EXPECT_GT(black, 2u) << size;
    }
}

/// The numbers of the south are those of the north, and so with west and east: no sign, no letter.
TEST_F(OverlayText, NumbersOfTheGridAreTheSameOnBothSides) {
    OverlayCanvas grid(4);
    WQDrawGridLines(grid.drawing, grid.style);
    const int frame = 26, size = 2041 * 4;
    const auto at = [](int units) { return (1019 + 10 * units) * 4 + 2; };
    for (int units = 5; units <= 90; units += 5) {
        // Inside of the frame, and clear of what is blanked.
        EXPECT_EQ(grid.pixels(at(units) - 40, frame + 2, 80, 25),
                  grid.pixels(at(-units) - 40, frame + 2, 80, 25))
            << units;
        EXPECT_EQ(grid.pixels(frame + 2, at(units) - 20, 45, 40),
                  grid.pixels(frame + 2, at(-units) - 20, 45, 40))
            << units;
        EXPECT_EQ(grid.pixels(size - frame - 45, at(units) - 20, 40, 40),
                  grid.pixels(size - frame - 45, at(-units) - 20, 40, 40))
            << units;
        // And each is the number itself, in its place.
        const WQText number = grid.typesetter.set(std::to_string(units), {kWQSansFamilies, 16});
        const auto expectNumber = [&](double numberX, double numberY, int x, int y, int width,
                                      int height) {
            OverlayCanvas plain(4);
            number.drawWithShadowAtPoint({numberX, numberY}, plain.drawing);
            const auto expected = plain.pixels(x, y, width, height);
            const auto drawn = grid.pixels(x, y, width, height);
            std::size_t wrong = 0;
            for (std::size_t index = 0; index < drawn.size(); ++index)
                wrong += (expected[index] == kWhite) != (drawn[index] == kWhite);
            EXPECT_EQ(wrong, 0u) << units << " at " << numberX;
        };
        const double x = std::floor(at(units) + 0.5 - number.width() / 2),
                     y = std::floor(at(units) + 0.5 - number.height() / 2);
        expectNumber(x, 4 + frame, at(units) - 40, frame + 2, 80, 25);
        expectNumber(frame + 28 / 3.0, y, frame + 2, at(units) - 20, 45, 40);
        expectNumber(std::floor(size - frame - 20 / 3.0 - number.width()), y, size - frame - 45,
                     at(units) - 20, 40, 40);
    }
}

/// Half a pixel is the same half on either side of the picture's edge.
TEST_F(OverlayText, LabelsThatBeginWestOfThePictureStandWhereOthersDo) {
    const WQText text = canvas.typesetter.set("Ostvale", kFont);
    const auto rowsWithTextAt = [&text](double x, int firstColumn) {
        OverlayCanvas plain(1);
        text.drawAtPoint({x, 100}, kBlack, plain.drawing);
        return plain.pixels(firstColumn, 90, 60, 40);
    };
    for (const double x : {-7.5, -2.5, -1.0, -0.5, 0.5})
        EXPECT_TRUE(rowsWithTextAt(x, 0) == rowsWithTextAt(x + 50, 50)) << x;
}

TEST_F(OverlayText, CharactersWithoutGlyphAreSaidOnce) {
    CapturedLog captured;
    for (int repeat = 0; repeat < 3; ++repeat)
        EXPECT_GT(widthOf("private \U0010FFFD"), 0);
    const std::string log = captured.take();
    EXPECT_THAT(log, ContainsRegex("no font of this machine has all characters of the label"));
    EXPECT_EQ(std::ranges::count(log, '\n'), 1) << log;
}

TEST_F(OverlayText, LabelsAreSetOnlyWhereTheyMayShow) {
    // Seen by what setting it would say.
    const std::string label = "\U0010FFFD";
    const double edge = 102.0;
    const struct {
        WQMapLocation place;
        bool isSet;
    } cases[] = {{{0, 0}, true},
                 {{edge - 2, 0}, true},
                 {{edge + 10, 0}, false},
                 {{0, edge + 10}, false},
                 {{0, -edge}, true},
                 {{0, -edge - 10}, false},
                 {{-edge - 1, 0}, true},
                 {{-3e30, 3e30}, false},
                 // A long label may reach into the picture from far in the west.
                 {{-edge - 30, 0}, true},
                 {{-edge - 4000, 0}, false}};
    for (const auto &[place, isSet] : cases) {
        OverlayCanvas fresh(1);
        CapturedLog captured;
        WQMarkerOverlay(fresh.drawing, fresh.style).drawMapPoint({"", place, label});
        EXPECT_EQ(!captured.take().empty(), isSet) << place.x << ", " << place.y;
    }
}

TEST(LetteringLibrary, IsTakenOnlyFromItsFoldersInTheRightVersion) {
    EXPECT_THAT(WQLetteringFolders("/opt/map/bin/Plotterra"),
                ElementsAre("/opt/map/bin", testing::MatchesRegex("/opt/map/lib.*/plotterra")));

    const TemporaryFolder empty, damaged, other, old;
    const auto library = [](const TemporaryFolder &folder) {
        return folder / kWQLetteringLibraryName;
    };
    std::ofstream(library(damaged)) << "no library";
    std::filesystem::copy_file(PLOTTERRA_SOME_LIBRARY, library(other));
    std::filesystem::copy_file(PLOTTERRA_OLD_LETTERING, library(old));
    std::vector<std::filesystem::path> folders = {empty.path(), damaged.path(), other.path(),
                                                  old.path(), ""};
    std::vector<std::string> reasons;
    EXPECT_EQ(WQLoadLettering(folders, reasons), nullptr);
    EXPECT_THAT(reasons,
                ElementsAre(ContainsRegex("No such file"), ContainsRegex("(short|invalid)"),
                            ContainsRegex("undefined symbol: WQLetteringVersion"),
                            ContainsRegex("of version 0.9-older, the program of version [0-9.]+-"),
                            ContainsRegex("not an absolute path")));
    for (std::size_t index = 0; index < 4; ++index)
        EXPECT_THAT(reasons.at(index), testing::HasSubstr(folders[index].string()));

    folders.push_back(std::filesystem::read_symlink("/proc/self/exe").parent_path());
    reasons.clear();
    EXPECT_NE(WQLoadLettering(folders, reasons), nullptr);
}

} // namespace
