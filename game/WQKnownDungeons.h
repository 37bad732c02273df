#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

/// One row of the known-dungeon table. The client data holds no readable name for these places.
struct WQKnownDungeon {
    /// Land block: column from the west in the high byte, row from the south in the low byte.
    std::uint16_t key;
    /// Map coordinates of the entrances, joined by ", "; empty when unknown.
    const char *entrance;
    /// Never empty. "?? " in front marks a name not confirmed, " / " parts alternatives.
    const char *name;
};

/// The rows of data/known_dungeons.tsv in its order, ended by a row of zeros.
extern const WQKnownDungeon WQKnownDungeonTable[];

/// Names by land block; they live as long as the table that they were made from.
using WQKnownDungeonDictionary = std::unordered_map<std::uint32_t, std::string_view>;

/// The names of a table that ends in a row of zeros. Logs the number of rows, and each key met
/// again: the later name wins.
WQKnownDungeonDictionary WQKnownDungeonNamesOfTable(const WQKnownDungeon *table);

/// The names of WQKnownDungeonTable, built (and counted in the log) by the first call.
const WQKnownDungeonDictionary &WQKnownDungeonNames();
