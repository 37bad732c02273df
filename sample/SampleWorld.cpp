#include "sample/SampleWorld.h"

#include "sample/SampleClimate.h"
#include "sample/SamplePainter.h"
#include "sample/SampleRandom.h"
#include "sample/SampleRivers.h"
#include "sample/SampleRoads.h"

#include <algorithm>
#include <map>

namespace {

/// There may be none.
const std::vector<std::uint16_t> &knownDungeonKeys() {
    static const std::vector<std::uint16_t> keys = {
#define WQ_KNOWN_DUNGEON(key, entrance, name) key,
#include "data/KnownDungeonRows.inc"
#undef WQ_KNOWN_DUNGEON
    };
    return keys;
}

constexpr std::uint32_t kBlockCount = SampleBlocksPerSide * SampleBlocksPerSide;
constexpr double kAbsentShare = 0.05;

// The window of land blocks that an older world does not know yet, and what the newer one lost.
constexpr int kUnknownColumns = 6, kUnknownRows = 5;
constexpr std::size_t kLostSeaBlocks = 10;
constexpr std::uint32_t kLostDungeonCells = 12;
constexpr int kMostTries = 200000;

std::uint16_t blockNumber(int column, int row) {
    return static_cast<std::uint16_t>((column << 8) | row);
}

int columnOf(std::uint16_t block) {
    return block >> 8;
}

int rowOf(std::uint16_t block) {
    return block & 0xFF;
}

} // namespace

SampleWorld::SampleWorld(const SampleOptions &options) : _options(options) {
    const std::uint64_t seed = options.seed;
    const SampleLandform landform(seed);
    const SampleClimate climate(seed, landform);
    const SampleRivers rivers(landform, climate);
    _terrain = SamplePainter(seed, landform, climate, rivers).paint(options.older);
    _towns = SampleSettleTowns(seed, landform, climate, rivers);
    SamplePaintTowns(_terrain, _towns, seed);
    SampleBuildRoads(_terrain, _towns, landform, rivers);
    chooseAbsentBlocks();
    chooseObjectBlocks();
    placeDungeons();
    if (options.older)
        unmakeLateYears();
}

bool SampleWorld::isDeepSea(int column, int row) const {
    for (int x = 0; x <= SampleCellsPerBlock; ++x)
        for (int y = 0; y <= SampleCellsPerBlock; ++y)
            if (_terrain.land(column * SampleCellsPerBlock + x, row * SampleCellsPerBlock + y) !=
                SampleLand::deepSea)
                return false;
    return true;
}

/// The open sea was never mapped whole: a twentieth of all blocks is missing, in drifts along the
/// margins.
void SampleWorld::chooseAbsentBlocks() {
    const SampleNoise noise(SampleHash(_options.seed, 40));
    std::vector<std::pair<float, std::uint16_t>> blocks;
    for (int column = 0; column < SampleBlocksPerSide; ++column)
        for (int row = 0; row < SampleBlocksPerSide; ++row) {
            if (!isDeepSea(column, row))
                continue;
            const float x = static_cast<float>(column), y = static_cast<float>(row);
            const float margin = std::min(std::min(x, 254 - x), std::min(y, 254 - y));
            blocks.push_back(
                {noise.layered(x / 24, y / 24, 4) - 0.012f * margin, blockNumber(column, row)});
        }
    std::sort(blocks.begin(), blocks.end(), std::greater<>());
    const std::size_t count =
        std::min(blocks.size(), static_cast<std::size_t>(kAbsentShare * kBlockCount));
    for (std::size_t i = 0; i < count; ++i)
        _absent[blocks[i].second] = true;
}

/// Towns have buildings; so have lone farms and watch-towers along the roads.
void SampleWorld::chooseObjectBlocks() {
    const auto blockAt = [](int point) {
        return std::clamp(point / SampleCellsPerBlock, 0, SampleBlocksPerSide - 1);
    };
    for (const SampleTown &town : _towns)
        for (int column = blockAt(town.x - SampleTownRadius);
             column <= blockAt(town.x + SampleTownRadius); ++column)
            for (int row = blockAt(town.y - SampleTownRadius);
                 row <= blockAt(town.y + SampleTownRadius); ++row)
                _objects[blockNumber(column, row)] = true;
    SampleRandom random(SampleHash(_options.seed, 41));
    for (int x = 0; x < SamplePointsPerSide; ++x)
        for (int y = 0; y < SamplePointsPerSide; ++y)
            if (_terrain.road(x, y) != 0 && random.chance(0.02))
                _objects[blockNumber(blockAt(x), blockAt(y))] = true;
    _objects &= ~_absent;
}

/// Shares the cells out among the known dungeons and the cellars of the towns, a few of them great
/// and most of them small.
void SampleWorld::placeDungeons() {
    std::map<std::uint16_t, double> weights;
    SampleRandom random(SampleHash(_options.seed, 42));
    for (const std::uint16_t key : knownDungeonKeys())
        if (columnOf(key) < SampleBlocksPerSide && rowOf(key) < SampleBlocksPerSide)
            weights[key] = 0.15 + random.unit() * random.unit() * random.unit() * 6;
    for (const SampleTown &town : _towns)
        weights[blockNumber(town.x / SampleCellsPerBlock, town.y / SampleCellsPerBlock)] = 1.0;
    double total = 0;
    for (const auto &[block, weight] : weights)
        total += weight;

    double reached = 0;
    std::uint32_t given = 0;
    for (const auto &[block, weight] : weights) {
        reached += weight;
        const auto upTo = static_cast<std::uint32_t>(reached / total * _options.cells + 0.5);
        if (upTo > given)
            _dungeons.push_back({block, upTo - given, 0});
        given = upTo;
    }
}

/// Turns what was made so far, which is the newer world, into the older one: some of the sea is not
/// lost yet, less of the coast is known, one dungeon is not rebuilt and one not closed.
void SampleWorld::unmakeLateYears() {
    SampleRandom random(SampleHash(_options.seed, 43));
    const auto anyBlock = [&](int columns, int rows) {
        const auto column = random.below(static_cast<std::uint32_t>(SampleBlocksPerSide - columns));
        const auto row = random.below(static_cast<std::uint32_t>(SampleBlocksPerSide - rows));
        return blockNumber(static_cast<int>(column), static_cast<int>(row));
    };
    std::bitset<65536> lost;
    for (int tries = 0; tries < kMostTries && lost.count() < kLostSeaBlocks; ++tries) {
        const std::uint16_t block = anyBlock(0, 0);
        if (_absent[block])
            lost[block] = true;
    }
    for (int tries = 0; tries < kMostTries; ++tries)
        if (const std::uint16_t block = anyBlock(kUnknownColumns, kUnknownRows);
            isWildCoast(block)) {
            for (int column = 0; column < kUnknownColumns; ++column)
                for (int row = 0; row < kUnknownRows; ++row)
                    _absent[blockNumber(columnOf(block) + column, rowOf(block) + row)] = true;
            break;
        }
    _absent &= ~lost;

    if (_dungeons.empty() || _towns.empty())
        return;
    _dungeons[random.below(static_cast<std::uint32_t>(_dungeons.size()))].edition = 1;
    // The dungeon that was closed lay under land that is still there, beside a town.
    const SampleTown &town = _towns.front();
    const std::uint16_t block =
        blockNumber(town.x / SampleCellsPerBlock + 1, town.y / SampleCellsPerBlock);
    const auto place = std::lower_bound(_dungeons.begin(), _dungeons.end(), block,
                                        [](const SampleDungeon &dungeon, std::uint16_t number) {
                                            return dungeon.landBlock < number;
                                        });
    if (place != _dungeons.end() && place->landBlock == block)
        place->cellCount += kLostDungeonCells;
    else
        _dungeons.insert(place, {block, kLostDungeonCells, 0});
}

/// Whether the window of blocks with this south-west corner is known, half land, half sea, and
/// nobody lives there.
bool SampleWorld::isWildCoast(std::uint16_t corner) const {
    int coast = 0;
    for (int column = columnOf(corner); column < columnOf(corner) + kUnknownColumns; ++column)
        for (int row = rowOf(corner); row < rowOf(corner) + kUnknownRows; ++row) {
            const std::uint16_t block = blockNumber(column, row);
            if (_absent[block] || _objects[block])
                return false;
            coast += !isDeepSea(column, row);
        }
    return coast * 10 > kUnknownColumns * kUnknownRows * 3 &&
           coast * 10 < kUnknownColumns * kUnknownRows * 8;
}
