#include "map/WQMapper.h"
#include "map/overlay/WQCompassOverlay.h"
#include "map/overlay/WQFeaturesBoxOverlay.h"
#include "map/overlay/WQGridOverlay.h"
#include "map/overlay/WQLowBitsOverlay.h"
#include "map/overlay/WQMarkerOverlay.h"
#include "map/overlay/WQTitleOverlay.h"
#include "map/overlay/WQTributeOverlay.h"
#include "tests/ArchiveBytes.h"
#include "tests/OverlayCanvas.h"
#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <sys/file.h>
#include <unistd.h>

namespace {

using Lines = std::vector<std::string>;

ZPData landBlock(std::uint32_t identifier, std::byte height) {
    ZPData bytes = words({identifier, 0});
    bytes.resize(8 + 2 * 81 + 82, height);
    return bytes;
}

/// The land that a renderer sets up from archives that nobody has loaded before.
class LandSetup : public testing::Test {
  protected:
    std::filesystem::path cellArchive(const std::string &name) const {
        std::filesystem::create_directory(folder / name);
        return folder / name / "client_cell_1.dat";
    }

    void writeWorld(const std::string &name, const std::map<std::uint32_t, ZPData> &files) const {
        ArchiveBytes archive;
        for (const auto &[identifier, bytes] : files)
            archive.addFile(identifier, bytes);
        archive.writeToPath(cellArchive(name));
    }

    /// Without that of the portal archive, which none of these worlds has.
    static Lines shortcomingsOfCells(const WQMapper &mapper) {
        Lines lines = mapper.shortcomings();
        std::erase_if(lines, [](const std::string &line) {
            return line.starts_with("The land is drawn as if it were flat: /");
        });
        return lines;
    }
    Lines shortcomingsOf(const std::string &name) const {
        WQClientData clientData(folder / name);
        WQMapper mapper(clientData);
        EXPECT_TRUE(mapper.setupLandBlockData());
        return shortcomingsOfCells(mapper);
    }

    TemporaryFolder folder;
};

TEST_F(LandSetup, ClientDataOfNoDirectoryIsAllSea) {
    writeWorld("newer", {{0x1234FFFF, landBlock(0x1234FFFF, std::byte{1})}});
    WQClientData none, newer(folder / "newer");
    // Red in the highest byte.
    using Colors = std::set<std::uint32_t>;
    const auto colorsOf = [this](WQMapper &mapper, bool isHeightMap = false) {
        const auto path = folder / "map.png";
        EXPECT_TRUE(isHeightMap ? mapper.saveHeightMapToURL(path) : mapper.saveMapToURL(path));
        const DecodedPNG picture = decodePNG(path);
        EXPECT_EQ(picture.width, 2041u);
        EXPECT_EQ(picture.bytesPerPixel, isHeightMap ? 1u : 4u);
        Colors colors;
        for (std::size_t index = 0; index < picture.bytes.size();) {
            std::uint32_t color = 0;
            for (unsigned part = 0; part < picture.bytesPerPixel; ++part)
                color = color << 8 | picture.bytes[index++];
            colors.insert(color);
        }
        return colors;
    };
    WQMapper sea(none);
    sea.setFudgeFactor(0); // whatever colour the sea has
    EXPECT_EQ(colorsOf(sea), Colors{0x000000FF});
    EXPECT_EQ(sea.shortcomings(), Lines{"The picture shows no land: there is no cell archive"});
    sea.setShouldUseAlpha(true);
    EXPECT_EQ(colorsOf(sea), Colors{0});
    EXPECT_EQ(colorsOf(sea, true), Colors{0});

    // There is nothing to compare with, on either side, which is no change.
    const std::string nothing = "added: 0, removed: 0, changed: 0\n";
    for (const auto &[current, older] : {std::pair{&newer, &none}, {&none, &newer}}) {
        WQMapper mapper(*current);
        mapper.setOldClientData(older);
        ASSERT_TRUE(mapper.setupLandBlockData());
        ASSERT_NE(mapper.comparison(), nullptr);
        EXPECT_EQ(mapper.comparison()->fileKeysAdded(), std::nullopt);
        EXPECT_EQ(mapper.comparison()->fileKeysChanged(), std::nullopt);
        EXPECT_EQ(mapper.landGrid()->at(0x12 * 8, 0x34 * 8).flags,
                  current == &newer ? WQLandPoint::hasData | WQLandPoint::isPassable : 0);
        ASSERT_TRUE(mapper.saveChangesToURL(folder / "changes"));
        EXPECT_TRUE(textOfFile(folder / "changes").starts_with(nothing));
        EXPECT_EQ(shortcomingsOfCells(mapper),
                  current == &newer
                      ? Lines{"No land counts as changed: there is no older cell archive"}
                      : Lines{"The picture shows no land: there is no cell archive"});
    }
}

TEST_F(LandSetup, LoadsBothArchivesBeforeItCompares) {
    const ZPData low = landBlock(0x1234FFFF, std::byte{1}),
                 high = landBlock(0x1234FFFF, std::byte{2});
    writeWorld("older", {{0x1234FFFF, low}, {0x00010100, low}});
    writeWorld("newer", {{0x1234FFFF, high}, {0x00020100, low}});
    WQClientData older(folder / "older"), newer(folder / "newer");
    WQMapper mapper(newer);
    mapper.setOldClientData(&older);
    ASSERT_TRUE(mapper.setupLandBlockData());
    EXPECT_EQ(mapper.comparison()->fileKeysAdded(), std::vector{0x00020100u});
    EXPECT_EQ(mapper.comparison()->fileKeysRemoved(), std::vector{0x00010100u});
    EXPECT_EQ(mapper.comparison()->fileKeysChanged(), std::vector{0x1234FFFFu});
    EXPECT_TRUE(mapper.landGrid()->at(0x12 * 8, 0x34 * 8).has(WQLandPoint::wasChanged));
    EXPECT_EQ(shortcomingsOfCells(mapper), Lines());

    // A height map compares nothing, and has no changes to tell of.
    ASSERT_TRUE(mapper.saveHeightMapToURL(folder / "heights.png"));
    EXPECT_EQ(mapper.comparison(), nullptr);
    ZPError error;
    EXPECT_FALSE(mapper.saveChangesToURL(folder / "changes", &error));
    EXPECT_EQ(error.domain, "");
    EXPECT_FALSE(std::filesystem::exists(folder / "changes"));
}

TEST_F(LandSetup, SaysWhichArchiveLeftItWithoutLandAndWhy) {
    const ZPData block = landBlock(0x1234FFFF, std::byte{1});
    const std::string none = "The picture shows no land: ";
    writeWorld("sound", {{0x1234FFFF, block}, {0x12340100, block}});
    EXPECT_EQ(shortcomingsOf("sound"), Lines());

    const auto path = [this](const std::string &name) { return cellArchive(name).string(); };
    writeWorld("empty", {});
    writeWorld("portal", {{0x13000000, block}, {0x12340100, block}});
    writeWorld("unreadable", {{0x1234FFFF, ZPData(9)}, {0xFFFEFFFF, ZPData(9)}});
    writeWorld("outside", {{0xFF00FFFF, block}});
    std::ofstream(path("short")) << "no archive";
    std::ofstream(path("text")) << std::string(5000, 'x');
    writeWorld("locked", {{0x1234FFFF, block}});
    const int descriptor = open(path("locked").c_str(), O_RDONLY);
    ASSERT_EQ(flock(descriptor, LOCK_EX), 0);
    const struct {
        std::string name, reason;
    } cases[] = {
        {"empty", "no files are found in " + path("empty")},
        {"portal", "none of the files in " + path("portal") + " is a land block (2)"},
        {"unreadable", "none of the land blocks in " + path("unreadable") + " can be read (2)"},
        {"outside", "none of the land blocks in " + path("outside") + " can be read (1)"},
        {"short", path("short") + " cannot be opened: it is no archive of this kind"},
        {"text", path("text") + " cannot be opened: it is no archive of this kind"},
        {"locked", path("locked") + " cannot be opened: another program holds it"},
        {"missing", path("missing") + " cannot be opened: No such file or directory"},
    };
    for (const auto &[name, reason] : cases) {
        EXPECT_EQ(shortcomingsOf(name), Lines{none + reason});

        WQClientData older(folder / name), newer(folder / "sound");
        WQMapper mapper(newer);
        mapper.setOldClientData(&older);
        ASSERT_TRUE(mapper.setupLandBlockData());
        const bool hasFiles = older.cellDataFile()->fileCount() != 0;
        EXPECT_EQ(shortcomingsOfCells(mapper),
                  hasFiles ? Lines() : Lines{"All land counts as added: " + reason});
        mapper.setOldClientData(nullptr);
        ASSERT_TRUE(mapper.setupLandBlockData());
        EXPECT_EQ(shortcomingsOfCells(mapper), Lines()); // those of the next picture
    }
    close(descriptor);
}

TEST_F(LandSetup, ShowsAWindowOnTheLand) {
    const std::byte clay{0x14};
    writeWorld("world", {{0x0000FFFF, landBlock(0x0000FFFF, clay)},
                         {0x1234FFFF, landBlock(0x1234FFFF, clay)}});
    WQClientData clientData(folder / "world");
    WQMapper mapper(clientData);
    EXPECT_TRUE(mapper.mapLand().empty());
    EXPECT_TRUE(mapper.bitmapContext().empty());
    ASSERT_TRUE(mapper.setupLandBlockData());
    mapper.setXOffset(0x12 * 8 - 3);
    mapper.setYOffset(0x34 * 8);
    mapper.setupLand();
    mapper.updateLand();
    mapper.setupBitmapContext();
    mapper.updateBitmap();
    const auto land = mapper.mapLand();
    ASSERT_EQ(land.size(), 512u * 512);
    // The types are those of the south-western corner, whatever the offsets.
    EXPECT_EQ(land[8], 0x14 >> 2);
    EXPECT_EQ(land[9], 0);
    const auto bitmap = mapper.bitmapContext();
    const std::size_t south = 511 * 512;
    EXPECT_FALSE(bitmap[south + 3] == bitmap[south + 2]);
    EXPECT_EQ(mapper.landTypeAtPoint(0x12 * 8, 0x34 * 8), 0x14u >> 2);
    // Flat.
    EXPECT_EQ(mapper.calculateNormal(*mapper.landGrid(), 0x12 * 8 + 1, 0x34 * 8 + 1).z, 1);
}

/// The overlays by themselves are tested elsewhere: here that each is the one that was asked for,
/// in this renderer's scale and with its markers.
TEST(RendererOverlays, AreDrawnOneByOne) {
    const WQMapPoint place("town", {57.0f, -24.2f}, "Place");
    const auto land = WQLandGrid::allocate();
    land->at(100, 200) = {3, 0, WQLandPoint::hasData};
    using Mapper = const WQMapper;
    const struct {
        std::function<void(Mapper &, WQDrawing &)> asked;
        std::function<void(WQDrawing &, const WQOverlayStyle &)> meant;
    } cases[] = {
        {&WQMapper::drawGridLinesInContext, WQDrawGridLines},
        {&WQMapper::drawCompassInContext, WQDrawCompass},
        {&WQMapper::drawTitleInContext, WQDrawTitle},
        {&WQMapper::drawTributeInContext, WQDrawTribute},
        {&WQMapper::drawFeaturesBoxInContext, WQDrawFeaturesBox},
        {&WQMapper::drawMarkersAtCoordinatesInContext, WQDrawMarkers},
        {[&](Mapper &mapper, WQDrawing &drawing) { mapper.drawMapPoint(place, drawing); },
         [&](auto &drawing, auto &style) { WQMarkerOverlay(drawing, style).drawMapPoint(place); }},
        {[](Mapper &mapper, WQDrawing &drawing) {
             mapper.drawMarkerAtCoordinate({1, 2}, drawing);
         },
         [](auto &drawing, auto &style) {
             WQMarkerOverlay(drawing, style).drawMarkerAtCoordinate({1, 2});
         }},
        {[](Mapper &mapper, WQDrawing &drawing) {
             mapper.drawMarkerAtPoint({70, 80}, drawing);
         },
         [](auto &drawing, auto &style) {
             WQMarkerOverlay(drawing, style).drawMarkerAtPoint({70, 80});
         }},
        {[&](Mapper &mapper, WQDrawing &drawing) { mapper.highlightLowBits(*land, drawing); },
         [&](auto &drawing, auto &) { WQHighlightLowBits(*land, drawing); }},
    };
    WQClientData clientData;
    WQMapper mapper(clientData);
    mapper.setScale(2);
    mapper.setCoordinates(std::vector{place});
    for (const auto &[asked, meant] : cases) {
        OverlayCanvas canvas(2), other(2);
        asked(mapper, canvas.drawing);
        meant(other.drawing, {2, mapper.lightVector(), 255, WQLandColorTable::shared(),
                              mapper.overlayChoice(), other.typesetter});
        const int size = static_cast<int>(canvas.drawing.size());
        const auto pixels = canvas.pixels(0, 0, size, size);
        EXPECT_TRUE(std::ranges::any_of(
            pixels, [](WQPixel pixel) { return pixel != OverlayCanvas::kGround; }));
        EXPECT_TRUE(pixels == other.pixels(0, 0, size, size));
    }
}

} // namespace
