// The page as a text: what stands where, and that nothing in it can pass for markup.

#include "game/WQKnownDungeons.h"
#include "tests/TestSupport.h"
#include "web/WQLandDigest.h"
#include "web/WQWebPage.h"
#include "web/WQWebPlaces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <openssl/evp.h>
#include <openssl/sha.h>
#include <set>
#include <zlib.h>

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr char kHostile[] = "</script><script>alert(1)</script>&amp;\"'><img onerror=alert(1)>";

class WebPage : public testing::Test {
  protected:
    WebPage() {
        land.grid = WQLandGrid::allocate();
        content.land = &land;
    }

    /// What stands between the first two of these after `start`.
    static std::string between(const std::string &text, const std::string &begin,
                               const std::string &end, std::size_t start = 0) {
        const std::size_t first = text.find(begin, start) + begin.size();
        return text.substr(first, text.find(end, first) - first);
    }

    static std::string digestSource(const std::string &text) {
        std::array<unsigned char, SHA256_DIGEST_LENGTH> digest;
        SHA256(reinterpret_cast<const unsigned char *>(text.data()), text.size(), digest.data());
        return "'sha256-" + base64(std::as_bytes(std::span(digest))) + "'";
    }

    static std::string base64(std::span<const std::byte> bytes) {
        std::vector<unsigned char> text((bytes.size() + 2) / 3 * 4 + 1);
        EVP_EncodeBlock(text.data(), reinterpret_cast<const unsigned char *>(bytes.data()),
                        static_cast<int>(bytes.size()));
        return reinterpret_cast<char *>(text.data());
    }

    WQWebLand land;
    WQWebContent content;
};

} // namespace

TEST_F(WebPage, TextIsNeverMarkup) {
    content.title = kHostile;
    const std::vector<WQMapPoint> places{{"t", {1.5, -2}, kHostile}, {"", {0, 0}, "broken \xff"}};
    content.places = places;
    const std::string page = WQWebPageWithContent(content);
    EXPECT_THAT(page, Not(HasSubstr("alert(1)</script>")));
    EXPECT_THAT(page, Not(HasSubstr("<img")));
    EXPECT_EQ(between(page, "<title>", "</title>"),
              "&lt;/script&gt;&lt;script&gt;alert(1)&lt;/script&gt;&amp;amp;\"'&gt;&lt;img "
              "onerror=alert(1)&gt;");
    const std::string description = between(page, "id=\"description\">", "</script>");
    EXPECT_THAT(description, Not(HasSubstr("<")));
    EXPECT_THAT(description, HasSubstr(R"([1.5,-2.0,"\u003c/script>\u003cscript>alert(1))"));
    EXPECT_THAT(description, HasSubstr("broken \xEF\xBF\xBD"));
}

TEST_F(WebPage, EitherLandHasItsOwnPointsAndFlags) {
    WQWebLand older;
    older.grid = WQLandGrid::allocate();
    older.grid->at(3, 4).heightIndex = 5;
    older.blocks[0x0102] = 1;
    land.grid->at(3, 4).heightIndex = 6;
    land.blocks[0x0203] = 2;
    content.olderLand = &older;
    const WQPackableLand olderLand{*older.grid, older.blocks};
    const ZPData packed = WQPackLand({*land.grid, land.blocks}, &olderLand);
    const std::string page = WQWebPageWithContent(content);
    EXPECT_EQ(between(page, "id=\"land\">", "</script>"), base64(packed));
    const auto checksum =
        adler32(adler32(0, nullptr, 0), reinterpret_cast<const Bytef *>(packed.data()),
                static_cast<uInt>(packed.size()));
    EXPECT_THAT(page, HasSubstr("\"landChecksum\":" + std::to_string(checksum)));
}

/// By which it finds the reader's marks again.
TEST_F(WebPage, ALandHasADigestOfItsOwn) {
    std::set<std::string> digests{WQLandDigest(*land.grid)};
    const std::pair<std::uint16_t, std::uint8_t> points[] = {{1, 0}, {0x8000, 0}, {0, 1}};
    for (const unsigned y : {0u, 63u, 64u, 2040u})
        for (const auto &[word, height] : points) {
            WQLandPoint &point = land.grid->at(2040, y);
            point = {word, height, 0};
            EXPECT_TRUE(digests.insert(WQLandDigest(*land.grid)).second) << y << ' ' << word;
            point = {0, 0, 0xFF};
            EXPECT_FALSE(digests.insert(WQLandDigest(*land.grid)).second);
            point = {};
        }
    content.title = "Another";
    EXPECT_THAT(WQWebPageWithContent(content),
                HasSubstr("\"landDigest\":\"" + WQLandDigest(*land.grid) + '"'));
}

TEST_F(WebPage, PlacesThatItCannotShowAreLeftOutAndSaid) {
    constexpr double kFar = std::numeric_limits<double>::infinity();
    const std::vector<WQMapPoint> places{{"", {102.149, -101.949}, "Corner"},
                                         {"", {1, kFar}, "Far"},
                                         {"", {102.151, 0}, "East"},
                                         {"", {-101.951, 0}, "West"},
                                         {"", {0, -101.951}, "South"},
                                         {"", {1, 2}, "One"},
                                         {"", {0, 102.151}, "North"},
                                         {"", {3, 4}, "Two"},
                                         {"", {5, 6}, "Three"}};
    CapturedLog captured;
    const auto shown = WQPlacesForPage(places, 2);
    const std::string log = captured.take();
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[0].label() + shown[1].label(), "CornerOne");
    EXPECT_THAT(log,
                HasSubstr("Error: 5 of 9 places are off the world and left out, first 'Far' at "
                          "  infN   1.0E"));
    EXPECT_THAT(log,
                HasSubstr("Error: 2 of 9 places are more than a page shows and left out, first "
                          "'Two' at   4.0N   3.0E"));
}

/// Whatever table the program was built with.
TEST_F(WebPage, DungeonsHaveAllTheirEntrances) {
    const std::string page = WQWebPageWithContent(content);
    const auto description =
        nlohmann::json::parse(between(page, "id=\"description\">", "</script>"));
    const WQKnownDungeon *row = WQKnownDungeonTable;
    for (const auto &dungeon : description.at("dungeons")) {
        ASSERT_NE(row->name, nullptr);
        EXPECT_EQ(dungeon.at(0), row->key);
        EXPECT_EQ(dungeon.at(1), row->name);
        std::string entrances;
        for (const auto &place : dungeon.at(2)) {
            std::string text = WQStringFromMapCoordinate({place.at(0), place.at(1)});
            std::erase(text, ' ');
            entrances += (entrances.empty() ? "" : ",") + text;
        }
        std::string expected = (row++)->entrance;
        std::erase(expected, ' ');
        EXPECT_EQ(entrances, expected);
    }
    EXPECT_EQ(row->name, nullptr);
}

TEST_F(WebPage, OnlyItsOwnScriptsAndStylesMayBeUsed) {
    content.title = "{{land}}"; // stays as it is
    const std::string page = WQWebPageWithContent(content);
    EXPECT_EQ(between(page, "<title>", "</title>"), "{{land}}");
    const std::string policy = between(page, "Content-Security-Policy\" content=\"", "\">");
    EXPECT_THAT(policy, HasSubstr("default-src 'none'"));
    EXPECT_THAT(policy, Not(HasSubstr("unsafe")));
    EXPECT_THAT(policy, Not(HasSubstr("http")));
    for (const char *tag : {"script", "style"}) {
        const std::string begin = std::string("<") + tag + ">", end = std::string("</") + tag + ">";
        std::size_t count = 0;
        for (std::size_t at = page.find(begin); at != std::string::npos;
             at = page.find(begin, at + 1), ++count)
            EXPECT_THAT(policy, HasSubstr(digestSource(between(page, begin, end, at)))) << at;
        EXPECT_EQ(count, 2u);
    }
    EXPECT_THAT(policy, HasSubstr(digestSource(between(page, "relief-library\">", "</script>"))));
    EXPECT_THAT(page, HasSubstr("Redistribution and use in source and binary forms"));
}
