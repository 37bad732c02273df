#pragma once

#include <cstdint>
#include <string_view>

/// The games whose archives have this format.
enum class ZPGorvaneGame : std::uint32_t {
    unknown = 0,
    firstRetail = 1,
    first = 2,
    second = 3,
    third = 4,
    fourth = 5,
};

/// The name that a game is shown under; numbers without a game have none and must not be asked for.
const char *ZPGorvaneGameDisplayName(ZPGorvaneGame game);
/// The short lower-case name, such as "ostvale", that picks a game on a command line.
const char *ZPGorvaneGameKey(ZPGorvaneGame game);
/// The game that such a name stands for; `unknown` for any other text.
[[nodiscard]] ZPGorvaneGame ZPGorvaneGameWithKey(std::string_view key);
