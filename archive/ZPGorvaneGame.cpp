#include "archive/ZPGorvaneGame.h"

#include <array>

namespace {

struct Game {
    const char *displayName;
    const char *key;
};

/// By game number.
constexpr std::array<Game, 6> kGames = {{
    {"Unknown", "unknown"},
    {"Ostvale (retail)", "ostvale-retail"},
    {"Ostvale", "ostvale"},
    {"Ostvale II", "ostvale2"},
    {"Saltmere", "saltmere"},
    {"Thornwatch", "thornwatch"},
}};

} // namespace

const char *ZPGorvaneGameDisplayName(ZPGorvaneGame game) {
    return kGames.at(static_cast<std::size_t>(game)).displayName;
}

const char *ZPGorvaneGameKey(ZPGorvaneGame game) {
    return kGames.at(static_cast<std::size_t>(game)).key;
}

ZPGorvaneGame ZPGorvaneGameWithKey(std::string_view key) {
    for (std::uint32_t number = 0; number < kGames.size(); ++number)
        if (kGames[number].key == key)
            return static_cast<ZPGorvaneGame>(number);
    return ZPGorvaneGame::unknown;
}
