#include "archive/ZPFastWay.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <ranges>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 3> kNames = {"map", "ahead", "index"};

std::array<bool, kNames.size()> openWays() {
    const char *closed = std::getenv("PLOTTERRA_WITHOUT");
    std::array<bool, kNames.size()> areOpen;
    for (std::size_t way = 0; way < kNames.size(); ++way) {
        areOpen[way] = true;
        for (const auto name : std::views::split(std::string_view(closed ? closed : ""), ','))
            if (std::string_view(name.begin(), name.end()) == kNames[way])
                areOpen[way] = false;
    }
    return areOpen;
}

} // namespace

bool ZPIsOpen(ZPFastWay way) {
    static const auto areOpen = openWays();
    return areOpen[static_cast<std::size_t>(way)];
}
