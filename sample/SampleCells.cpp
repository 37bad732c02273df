#include "sample/SampleCells.h"

#include "io/ZPMutableDataCursor.h"
#include "sample/SampleArchiveWriter.h"
#include "sample/SampleRandom.h"
#include "sample/SampleRecords.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::uint32_t kLandBlockKind = 0xFFFF;
constexpr std::uint32_t kObjectBlockKind = 0xFFFE;
constexpr std::uint32_t kFirstDungeonCell = 0x0100;

constexpr std::uint32_t identifierOf(std::uint16_t landBlock, std::uint32_t kind) {
    return (std::uint32_t{landBlock} << 16) | kind;
}

/// Scenery set around a vertex: woods are thick with it, water and roads bare.
std::uint32_t sceneryOf(SampleLand land, std::uint64_t chance) {
    if (SampleTerrain::isWater(land))
        return 0;
    const bool isThick = land == SampleLand::forestFloor || land == SampleLand::darkMoss ||
                         land == SampleLand::marshSparseSwamp;
    if (chance % 8 >= (isThick ? 6u : 2u))
        return 0;
    return 1 + static_cast<std::uint32_t>(land) % 8 * 3 +
           static_cast<std::uint32_t>(chance >> 8) % 3;
}

void writePosition(ZPMutableDataCursor &record, SampleRandom &random) {
    for (int i = 0; i < 3; ++i)
        record.writeLittleFloat32(static_cast<float>(random.range(0, 192)));
    // A turn about the vertical axis.
    const float w = static_cast<float>(random.range(-1, 1));
    record.writeLittleFloat32(w);
    record.writeLittleFloat32(0);
    record.writeLittleFloat32(0);
    record.writeLittleFloat32(std::sqrt(1 - w * w));
}

} // namespace

///     0    u32       identifier
///     4    u32       1 when the block has an object block
///     8    81 x u16  terrain words, column by column from the west, each from the south:
///                    bits 0-1 road, 2-6 terrain code, 7-10 nothing, 11-15 scenery
///     170  81 x u8   height indexes, in the same order
///     251  u8        padding
std::vector<std::byte> SampleLandBlockRecord(const SampleWorld &world, std::uint16_t landBlock) {
    const SampleTerrain &terrain = world.terrain();
    const int west = (landBlock >> 8) * SampleCellsPerBlock;
    const int south = (landBlock & 0xFF) * SampleCellsPerBlock;
    ZPMutableDataCursor record;
    record.writeLittleInt32(identifierOf(landBlock, kLandBlockKind));
    record.writeLittleInt32(world.hasObjects(landBlock) ? 1 : 0);
    for (int x = west; x <= west + SampleCellsPerBlock; ++x)
        for (int y = south; y <= south + SampleCellsPerBlock; ++y) {
            const std::size_t point = terrain.land.index(x, y);
            const SampleLand land = terrain.land[point];
            const std::uint32_t road = terrain.road[point];
            const std::uint32_t scenery =
                road != 0 ? 0 : sceneryOf(land, SampleHash(world.options().seed, point));
            record.writeLittleInt16(static_cast<std::uint16_t>(
                road | static_cast<std::uint32_t>(land) << 2 | scenery << 11));
        }
    for (int x = west; x <= west + SampleCellsPerBlock; ++x)
        for (int y = south; y <= south + SampleCellsPerBlock; ++y)
            record.writeByte(terrain.height(x, y));
    record.writeByte(0);
    return record.takeData();
}

///     0   u32  identifier
///     4   u32  number of cells of the buildings
///     8   u32  number of objects, then for each: u32 model, 3 x f32 place, 4 x f32 turn
///     ..  u32  number of buildings, then for each: the same and u32 number of leaves
std::vector<std::byte> SampleObjectBlockRecord(const SampleWorld &world, std::uint16_t landBlock) {
    const std::uint32_t identifier = identifierOf(landBlock, kObjectBlockKind);
    SampleRandom random(SampleHash(world.options().seed, identifier));
    const std::uint32_t objects = 2 + random.below(9), buildings = random.below(4);
    ZPMutableDataCursor record;
    record.writeLittleInt32(identifier);
    record.writeLittleInt32(buildings * 3);
    record.writeLittleInt32(objects);
    for (std::uint32_t i = 0; i < objects; ++i) {
        record.writeLittleInt32(0x01000000 + random.below(0x4000));
        writePosition(record, random);
    }
    record.writeLittleInt32(buildings);
    for (std::uint32_t i = 0; i < buildings; ++i) {
        record.writeLittleInt32(0x02000000 + random.below(0x1000));
        writePosition(record, random);
        record.writeLittleInt32(1 + random.below(40));
    }
    return record.takeData();
}

///     0   u32  identifier
///     4   u32  flags
///     8   u32  identifier again
///     12  u8   number of surfaces, u8 of portals, u16 of visible cells
///     16  u16  for each surface, then u16 environment, u16 structure
///     ..  7 x f32 place and turn, then for each portal 4 x u16, then the visible cells as u16
///     ..  things that stand in the cell, as in an object block
std::vector<std::byte> SampleDungeonCellRecord(const SampleWorld &world,
                                               const SampleDungeon &dungeon, std::uint32_t number) {
    const std::uint32_t identifier = identifierOf(dungeon.landBlock, kFirstDungeonCell + number);
    SampleRandom random(SampleHash(world.options().seed + dungeon.edition, identifier));
    const std::uint32_t surfaces = 4 + random.below(10), portals = 2 + random.below(6);
    const std::uint32_t visible = random.below(std::min(dungeon.cellCount + 1, 40u));
    const std::uint32_t kinds = random.below(4), things = kinds * (1 + random.below(5));
    ZPMutableDataCursor record;
    record.writeLittleInt32(identifier);
    record.writeLittleInt32(things > 0 ? 2 : 0);
    record.writeLittleInt32(identifier);
    record.writeByte(static_cast<std::uint8_t>(surfaces));
    record.writeByte(static_cast<std::uint8_t>(portals));
    record.writeLittleInt16(static_cast<std::uint16_t>(visible));
    for (std::uint32_t i = 0; i < surfaces + 2; ++i)
        record.writeLittleInt16(static_cast<std::uint16_t>(random.below(0x800)));
    writePosition(record, random);
    for (std::uint32_t i = 0; i < portals; ++i) {
        record.writeLittleInt16(static_cast<std::uint16_t>(random.below(4)));
        record.writeLittleInt16(static_cast<std::uint16_t>(i));
        record.writeLittleInt16(
            static_cast<std::uint16_t>(kFirstDungeonCell + random.below(dungeon.cellCount)));
        record.writeLittleInt16(static_cast<std::uint16_t>(random.below(6)));
    }
    for (std::uint32_t i = 0; i < visible; ++i)
        record.writeLittleInt16(
            static_cast<std::uint16_t>(kFirstDungeonCell + random.below(dungeon.cellCount)));
    record.writeLittleInt32(things);
    for (std::uint32_t i = 0; i < things; ++i) {
        record.writeLittleInt32(0x02000000 + random.below(0x1000));
        writePosition(record, random);
    }
    return record.takeData();
}

bool SampleWriteCellArchive(const SampleWorld &world, ZPAtomicFile &file, ZPError *error) {
    SampleArchiveWriter archive(file, {.blockSize = 256, .contentType = 2, .contentSubtype = 1},
                                SampleHash(world.options().seed, 50));
    const auto add = [&](std::uint32_t identifier, const std::vector<std::byte> &record) {
        return archive.addFile(SampleStampedEntry(world.options(), identifier), record, error);
    };
    auto dungeon = world.dungeons().begin();
    for (std::uint32_t block = 0; block < 0x10000; ++block) {
        const auto number = static_cast<std::uint16_t>(block);
        for (; dungeon != world.dungeons().end() && dungeon->landBlock == number; ++dungeon)
            for (std::uint32_t i = 0; i < dungeon->cellCount; ++i)
                if (!add(identifierOf(number, kFirstDungeonCell + i),
                         SampleDungeonCellRecord(world, *dungeon, i)))
                    return false;
        const bool isInWorld =
            (block >> 8) < SampleBlocksPerSide && (block & 0xFF) < SampleBlocksPerSide;
        if (!isInWorld || !world.hasLand(number))
            continue;
        if (world.hasObjects(number) &&
            !add(identifierOf(number, kObjectBlockKind), SampleObjectBlockRecord(world, number)))
            return false;
        if (!add(identifierOf(number, kLandBlockKind), SampleLandBlockRecord(world, number)))
            return false;
    }
    return add(SampleVersionIdentifier, SampleVersionRecord(world.options())) &&
           archive.finish(error);
}
