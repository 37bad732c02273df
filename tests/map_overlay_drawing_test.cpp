#include "OverlayCanvas.h"
#include "map/overlay/WQGridOverlay.h"
#include "map/overlay/WQMarkerOverlay.h"
#include "map/overlay/WQOverlayTable.h"

#include <fstream>
#include <future>
#include <gmock/gmock.h>
#include <list>
#include <random>

namespace {

constexpr WQPixel kGround = OverlayCanvas::kGround;

std::vector<WQMapPoint> somePlaces() {
    return {{"dot", {57.0, -24.2}, "Camp"},     {"", {-12.345, 0.123}, ""},
            {"", {-100.0, 97.7}, "Ωμέγα שלום"}, {"", {101.3, 50.0}, "cut off at the edge"},
            {"", {150, 150}, "outside"},        {"", {3e30, -3e30}, "far out"}};
}

/// Rows from `firstRow` on, drawn in parts of random height, in blocks of random width that hold
/// only what is touched.
void drawInBlocks(const WQDrawing &drawing, std::size_t firstRow, std::size_t rowCount,
                  std::size_t width, std::uint32_t seed, WQPixel ground, WQPixel *picture) {
    std::mt19937 random(seed);
    for (std::size_t row = firstRow, end = firstRow + rowCount; row < end;) {
        const std::size_t height = std::min<std::size_t>(1 + random() % 90, end - row);
        const std::size_t above = random() % (row - firstRow + 1);
        const WQDrawnRows rows =
            WQDrawnRows(drawing, row - above, above + height).part(row, height);
        std::vector<WQDrawnRows::Block> blocks;
        std::list<std::vector<WQPixel>> memory;
        for (auto [first, last] : rows.touchedColumns()) {
            EXPECT_LT(first, last);
            while (first < last) {
                const std::size_t part = std::min<std::size_t>(1 + random() % 200, last - first);
                auto &pixels = memory.emplace_back(part * height, ground);
                blocks.push_back({{first, first + part}, pixels});
                first += part;
            }
        }
        rows.drawOnBlocks(blocks);
        for (const auto &[columns, pixels] : blocks)
            for (std::size_t index = 0, part = columns.end - columns.first; index < height; ++index)
                std::copy_n(pixels.data() + index * part, part,
                            picture + (row + index) * width + columns.first);
        row += height;
    }
}

TEST(OverlayDrawing, BlocksAndThreadsChangeNoPixel) {
    OverlayCanvas canvas(1);
    canvas.choice.grid = true;
    canvas.choice.coordinates = somePlaces();
    const auto drawing = WQDrawOverlays(canvas.style);
    const std::size_t size = drawing->size(), half = size / 2;
    for (const WQPixel ground : {kGround, WQPixel{}}) {
        std::vector<WQPixel> whole(size * size, ground);
        const WQDrawnRows::Block block{{0, size}, whole};
        WQDrawnRows(*drawing, 0, size).drawOnBlocks({&block, 1});
        std::vector<WQPixel> picture(size * size, ground);
        const auto draw = [&](std::size_t first, std::size_t count, std::uint32_t seed) {
            drawInBlocks(*drawing, first, count, size, seed, ground, picture.data());
        };
        auto north = std::async(std::launch::async, draw, 0, half, 1);
        draw(half, size - half, 2);
        north.wait();
        EXPECT_TRUE(whole == picture);
    }
}

TEST(OverlayDrawing, TouchesOnlyWhatItDraws) {
    OverlayCanvas canvas(8);
    const std::size_t size = canvas.drawing.size();
    EXPECT_TRUE(WQDrawnRows(canvas.drawing, 0, size).touchedColumns().empty());
    WQDrawGridLines(canvas.drawing, canvas.style);
    // Between two rows of labels: 41 lines, and the frame on both sides.
    const auto touched = WQDrawnRows(canvas.drawing, size / 2 - 200, 100).touchedColumns();
    ASSERT_EQ(touched.size(), 43u);
    EXPECT_EQ(touched[1].end - touched[1].first, 1u);
}

TEST(OverlayDrawing, MixesWithGroundOfAnyAlpha) {
    OverlayCanvas canvas(1);
    canvas.drawing.fillRectangle({100.5, 200, 1, 1}, {200, 100, 50, 255});
    const auto pixelOn = [&](WQPixel ground) {
        return canvas.pixels(100, 200, 1, 1, ground).front();
    };
    EXPECT_EQ(pixelOn({}), (WQPixel{200, 100, 50, 128}));
    EXPECT_EQ(pixelOn({0, 0, 0, 255}), (WQPixel{100, 50, 25, 255}));
    // Half of it over half of the ground: two thirds of the colour.
    EXPECT_EQ(pixelOn({0, 100, 0, 128}), (WQPixel{134, 100, 33, 192}));

    WQMarkerOverlay(canvas.drawing, canvas.style).drawMarkerAtCoordinate({0, 0});
    for (const WQPixel &pixel : canvas.pixels(1000, 1000, 40, 40, {}))
        EXPECT_TRUE(pixel.green == 0 && pixel.blue == 0 && (pixel.alpha != 0 || pixel.red == 0));
}

TEST(OverlayDrawing, AShapeLooksTheSameHoweverOftenItWasDrawn) {
    OverlayCanvas canvas(1), fresh(1);
    WQShape disc = WQShape::filled({{}, 5});
    for (const WQImagePoint &point :
         {WQImagePoint{20.25, 20.25}, {40.25, 20.75}, {60.75, 20.25}, {80.25, 20.25}}) {
        disc.drawAtPoint(point, {}, canvas.drawing);
        WQShape::filled({{}, 5}).drawAtPoint(point, {}, fresh.drawing);
    }
    EXPECT_TRUE(canvas.pixels(0, 0, 100, 40) == fresh.pixels(0, 0, 100, 40));
}

TEST(OverlayDrawing, LabelStaysInItsBox) {
    for (const unsigned scale : {1u, 8u}) {
        OverlayCanvas canvas(scale);
        const std::string label = "Quarry of Fens";
        WQMarkerOverlay(canvas.drawing, canvas.style).drawMapPoint({"", {10, 20}, label});
        const WQText text = canvas.typesetter.set(label, {kWQSansFamilies, 12});
        EXPECT_EQ(canvas.typesetter.set("not UTF-8: \xE9", {kWQSansFamilies, 12}).width(), 0);
        ASSERT_GT(text.width(), 40);
        ASSERT_GT(text.height(), 11);
        const int x = 1119 * int(scale) + int(scale / 2), y = 1219 * int(scale) + int(scale / 2);
        const auto pixels = canvas.pixels(x - 50, y - 50, 300, 100);
        std::size_t inkCount = 0;
        for (int row = 0; row < 100; ++row)
            for (int column = 0; column < 300; ++column) {
                const int right = column - 50, up = 49 - row;
                if (right * right + up * up < 200 ||
                    pixels[unsigned(row * 300 + column)] == kGround)
                    continue;
                ++inkCount;
                EXPECT_TRUE(right >= 14 && right <= 17 + text.width() && up >= -6 &&
                            up <= -3 + text.height())
                    << right << ", " << up;
            }
        EXPECT_GT(inkCount, 100u);
    }
}

TEST(OverlayDrawing, TextIsOneLineHighAndKeepsOffNoise) {
    OverlayCanvas canvas(1);
    const auto set = [&](const std::string &text) {
        return canvas.typesetter.set(text, {kWQSansFamilies, 12});
    };
    const WQText text = set("Quarry");
    EXPECT_EQ(set("Quarry\r").width(), text.width());
    EXPECT_EQ(set("Quarry\r").height(), text.height());
    EXPECT_LT(set("Quarry" + std::string(5000, '\r') + "x").height(), 2 * text.height());
    EXPECT_EQ(set("\r").width(), 0);

    // Half a pixel, and what sums make of it, are the same place.
    text.drawAtPoint({100.5, 200.5}, {}, canvas.drawing);
    text.drawAtPoint({200.4999999, 200.4999999}, {}, canvas.drawing);
    text.drawAtPoint({300.5000001, 200.5000001}, {}, canvas.drawing);
    const auto pixels = canvas.pixels(90, 190, 100, 50);
    EXPECT_NE(pixels, std::vector<WQPixel>(pixels.size(), kGround));
    EXPECT_TRUE(pixels == canvas.pixels(190, 190, 100, 50));
    EXPECT_TRUE(pixels == canvas.pixels(290, 190, 100, 50));
}

/// In a process of its own, since fonts are looked for only once.
TEST(OverlayDrawingDeathTest, WithoutFontsOnlyLabelsAreMissing) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::string configuration = testing::TempDir() + "/no-fonts.conf";
    std::ofstream(configuration) << "<fontconfig></fontconfig>\n";
    const auto draw = [&] {
        setenv("FONTCONFIG_FILE", configuration.c_str(), 1);
        OverlayCanvas canvas(1);
        WQDrawGridLines(canvas.drawing, canvas.style);
        for (const WQMapPoint &place : somePlaces())
            WQMarkerOverlay(canvas.drawing, canvas.style).drawMapPoint(place);
        const bool hasDisc = canvas.pixel(1589, 777) == WQPixel{255, 0, 0, 255};
        std::exit(hasDisc ? 0 : 1);
    };
    EXPECT_EXIT(draw(), testing::ExitedWithCode(0), "no fonts; the labels of the map are missing");
    std::remove(configuration.c_str());
}

} // namespace
