#include "tests/SampleChanges.h"

#include "sample/SampleCells.h"

#include <bitset>
#include <map>

SampleChanges SampleCompareWorlds(const SampleWorld &older, const SampleWorld &newer) {
    std::bitset<65536> added, removed, changed;
    for (int column = 0; column < SampleBlocksPerSide; ++column)
        for (int row = 0; row < SampleBlocksPerSide; ++row) {
            const auto block = static_cast<std::uint16_t>(column << 8 | row);
            if (!older.hasLand(block) || !newer.hasLand(block)) {
                added[block] = newer.hasLand(block);
                removed[block] = older.hasLand(block);
            } else {
                changed[block] =
                    SampleLandBlockRecord(older, block) != SampleLandBlockRecord(newer, block);
            }
        }
    const auto byBlock = [](const SampleWorld &world) {
        std::map<std::uint16_t, SampleDungeon> dungeons;
        for (const SampleDungeon &dungeon : world.dungeons())
            dungeons.insert({dungeon.landBlock, dungeon});
        return dungeons;
    };
    const auto before = byBlock(older), after = byBlock(newer);
    for (const auto &[block, dungeon] : before) {
        const auto same = after.find(block);
        const std::uint32_t left = same == after.end() ? 0 : same->second.cellCount;
        if (dungeon.cellCount > left)
            removed[block] = true;
        if (left > 0 && dungeon.edition != same->second.edition)
            changed[block] = true;
    }
    for (const auto &[block, dungeon] : after) {
        const auto same = before.find(block);
        if (same == before.end() || same->second.cellCount < dungeon.cellCount)
            added[block] = true;
    }
    // The version record counts as a file of this number, which no land block has.
    changed[0xFFFF] = older.options().older != newer.options().older;
    const auto listed = [](const std::bitset<65536> &blocks) {
        std::vector<std::uint16_t> numbers;
        for (std::size_t i = 0; i < blocks.size(); ++i)
            if (blocks[i])
                numbers.push_back(static_cast<std::uint16_t>(i));
        return numbers;
    };
    return {listed(added), listed(removed), listed(changed)};
}
