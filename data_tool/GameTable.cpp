#include "data_tool/GameTable.h"

#include "game/WQArchiveFamilies.h"
#include "game/WQRecordClass.h"

#include <algorithm>

namespace {

using enum ArchiveRole;

constexpr ArchiveFileName kFirstGameFiles[] = {{"client_portal.dat", "portal", portal},
                                               {"client_highres.dat", "highres", highres},
                                               {"client_cell_1.dat", "cell", cell},
                                               {"client_local_English.dat", "local", local}};
constexpr ArchiveFileName kRetailFiles[] = {{"portal.dat", "portal", portal},
                                            {"cell.dat", "cell", cell}};

const char *classNameInFirstGame(ArchiveRole role, std::uint32_t identifier) {
    if (role == cell)
        return WQRecordClassForCellIdentifier(identifier).name;
    const WQRecordClass *recordClass = WQRecordClassForPortalIdentifier(identifier);
    return recordClass != nullptr ? recordClass->name : nullptr;
}

// The order is the one in which archives of unknown origin are tried.
constexpr GameRow kGames[] = {
    {ZPGorvaneGame::first, "ostvale", 3, &kWQArchiveFamily, kFirstGameFiles, &classNameInFirstGame,
     true, true},
    {ZPGorvaneGame::second, "ostvale2", 2, &kWQ2ArchiveFamily, {}, nullptr, true, false},
    {ZPGorvaneGame::firstRetail, "ostvale-retail", 1, &kWQRetailArchiveFamily, kRetailFiles,
     nullptr, false, false},
};

} // namespace

std::span<const GameRow> gameTable() {
    return kGames;
}

const GameRow *gameWithKey(std::string_view key) {
    const auto *row = std::ranges::find(
        kGames, key, [](const GameRow &game) { return std::string_view(game.key); });
    return row != std::end(kGames) ? row : nullptr;
}
