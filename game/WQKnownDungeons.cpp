#include "game/WQKnownDungeons.h"

#include "io/ZPSystemLog.h"

#include <cstddef>

const WQKnownDungeon WQKnownDungeonTable[] = {
#define WQ_KNOWN_DUNGEON(key, entrance, name) {key, entrance, name},
#include "data/KnownDungeonRows.inc"
#undef WQ_KNOWN_DUNGEON
    {0, nullptr, nullptr}};

WQKnownDungeonDictionary WQKnownDungeonNamesOfTable(const WQKnownDungeon *table) {
    std::size_t count = 0;
    while (table[count].name != nullptr)
        ++count;

    WQKnownDungeonDictionary names;
    names.reserve(count);
    for (const WQKnownDungeon *row = table; row->name != nullptr; ++row) {
        const bool isNew = names.insert_or_assign(row->key, row->name).second;
        if (!isNew)
            ZPLog("Warning: Duplicate key: %04x", row->key);
    }
    ZPLog("%zu known dungeons", count);
    return names;
}

const WQKnownDungeonDictionary &WQKnownDungeonNames() {
    static const WQKnownDungeonDictionary names = WQKnownDungeonNamesOfTable(WQKnownDungeonTable);
    return names;
}
