#include "web/WQWebPage.h"

#include "game/WQKnownDungeons.h"
#include "io/ZPSHA256.h"
#include "io/ZPText.h"
#include "map/png/WQAdler32.h"
#include "web/WQLandDigest.h"
#include "web/WQWebAssets.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

std::string base64(std::span<const std::byte> bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t place = 0; place < bytes.size(); place += 3) {
        const std::size_t count = std::min<std::size_t>(bytes.size() - place, 3);
        std::uint32_t word = 0;
        for (std::size_t index = 0; index < 3; ++index)
            word = word << 8 |
                   (index < count ? std::to_integer<std::uint32_t>(bytes[place + index]) : 0);
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= count ? kDigits[word >> (18 - 6 * digit) & 0x3F] : '=';
    }
    return text;
}

/// How a Content-Security-Policy names a script or style that may be used.
std::string policySource(std::string_view text) {
    return " 'sha256-" + base64(ZPSHA256DigestOfData(std::as_bytes(std::span(text)))) + "'";
}

/// Nothing is loaded from anywhere. Workers are made of the page's own text, pictures of what it
/// draws itself.
std::string policy() {
    return "default-src 'none'; base-uri 'none'; form-action 'none'; worker-src blob:; "
           "img-src data: blob:; script-src" +
           policySource(WQWebAssets::flatLibrary) + policySource(WQWebAssets::reliefLibrary) +
           policySource(WQWebAssets::application) + "; style-src" +
           policySource(WQWebAssets::flatLibraryStyle) + policySource(WQWebAssets::style);
}

/// Text between tags.
std::string escapedText(std::string_view text) {
    std::string escaped;
    for (const char character : text)
        switch (character) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        default: escaped += character;
        }
    return escaped;
}

/// JSON for a script element, which no text in it can end.
std::string embeddedText(const json &value) {
    const std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
    std::string escaped;
    escaped.reserve(text.size());
    for (const char character : text)
        if (character == '<')
            escaped += "\\u003c";
        else
            escaped += character;
    return escaped;
}

json coordinatesOfText(std::string_view entrances) {
    json coordinates = json::array();
    if (entrances.empty())
        return coordinates;
    std::size_t start = 0;
    while (start != std::string_view::npos) {
        const std::size_t end = entrances.find(", ", start);
        WQMapLocation location;
        if (WQMapCoordinateFromString(entrances.substr(start, end - start), &location))
            coordinates.push_back({location.x, location.y});
        start = end == std::string_view::npos ? end : end + 2;
    }
    return coordinates;
}

json knownDungeons() {
    json dungeons = json::array();
    for (const WQKnownDungeon *dungeon = WQKnownDungeonTable; dungeon->name != nullptr; ++dungeon)
        dungeons.push_back({dungeon->key, dungeon->name, coordinatesOfText(dungeon->entrance)});
    return dungeons;
}

json colors() {
    json colors = json::array();
    WQLandColorTable table;
    table.updateLandColors(WQMapColorScheme());
    for (std::size_t index = 0; index < kWQLandTypeCount; ++index)
        colors.push_back({table[index].red, table[index].green, table[index].blue});
    return colors;
}

json description(const WQWebContent &content) {
    json heights = json::array(), landTypes = json::array(), places = json::array();
    if (content.worldInfo != nullptr) {
        for (const float height : content.worldInfo->actualLandHeights())
            heights.push_back(std::isfinite(height) ? height : 0);
        for (const WQLandInfo &landType : content.worldInfo->landTypes())
            landTypes.push_back(landType.name());
    }
    for (const WQMapPoint &place : content.places)
        places.push_back({place.coordinate().x, place.coordinate().y, place.label(), place.type()});
    return {{"title", content.title},
            {"hasOlderLand", content.olderLand != nullptr},
            {"landDigest", WQLandDigest(*content.land->grid)},
            {"heights", std::move(heights)},
            {"landTypes", std::move(landTypes)},
            {"colorNames", WQMapColorScheme().colorKeyPaths()},
            {"colors", colors()},
            {"places", std::move(places)},
            {"dungeons", knownDungeons()}};
}

ZPData packedLand(const WQWebContent &content) {
    const WQPackableLand land{*content.land->grid, content.land->blocks};
    if (content.olderLand == nullptr)
        return WQPackLand(land, nullptr);
    const WQPackableLand olderLand{*content.olderLand->grid, content.olderLand->blocks};
    return WQPackLand(land, &olderLand);
}

/// By which the page knows that its land is as it was written.
std::uint32_t checksum(std::span<const std::byte> bytes) {
    WQAdler32 checksum;
    checksum.append(bytes);
    return checksum.value();
}

} // namespace

std::string WQWebPageWithContent(const WQWebContent &content) {
    const ZPData packed = packedLand(content);
    json known = description(content);
    known["landChecksum"] = checksum(packed);
    const std::string title = escapedText(content.title), rules = policy(),
                      descriptionText = embeddedText(known), land = base64(packed);
    const auto textForName = [&](std::string_view name) -> std::string_view {
        if (name == "title")
            return title;
        if (name == "policy")
            return rules;
        if (name == "description")
            return descriptionText;
        if (name == "land")
            return land;
        if (name == "style")
            return WQWebAssets::style;
        if (name == "application")
            return WQWebAssets::application;
        if (name == "worker")
            return WQWebAssets::worker;
        if (name == "flatLibrary")
            return WQWebAssets::flatLibrary;
        if (name == "flatLibraryStyle")
            return WQWebAssets::flatLibraryStyle;
        if (name == "reliefLibrary")
            return WQWebAssets::reliefLibrary;
        return WQWebAssets::licences;
    };
    std::string page;
    page.reserve(land.size() + (2 << 20));
    std::string_view rest = WQWebAssets::page;
    for (std::size_t start; (start = rest.find("{{")) != std::string_view::npos;) {
        const std::size_t end = rest.find("}}", start);
        page += rest.substr(0, start);
        page += textForName(rest.substr(start + 2, end - start - 2));
        rest = rest.substr(end + 2);
    }
    page += rest;
    return page;
}
