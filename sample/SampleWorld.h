#pragma once

#include "sample/SampleLandform.h"
#include "sample/SampleTerrain.h"
#include "sample/SampleTowns.h"

#include <bitset>
#include <cstdint>
#include <vector>

struct SampleOptions {
    std::uint64_t seed = 3;
    std::uint32_t cells = 20000;
    /// The same world some years earlier.
    bool older = false;
};

/// Dungeon cells that lie under one land block.
struct SampleDungeon {
    std::uint16_t landBlock; // column in the high byte, row in the low one
    std::uint32_t cellCount;
    /// Mixed into the cells' contents; a dungeon rebuilt over the years has another one.
    std::uint32_t edition;
};

/// Everything that the archives tell about the world.
class SampleWorld {
  public:
    explicit SampleWorld(const SampleOptions &options);

    const SampleOptions &options() const { return _options; }
    const SampleTerrain &terrain() const { return _terrain; }
    const std::vector<SampleTown> &towns() const { return _towns; }
    /// In the order of their land blocks, none twice.
    const std::vector<SampleDungeon> &dungeons() const { return _dungeons; }

    /// Land blocks are numbered 0xXXYY, the column from the west and the row from the south.
    bool hasLand(std::uint16_t landBlock) const { return !_absent[landBlock]; }
    bool hasObjects(std::uint16_t landBlock) const { return _objects[landBlock]; }

  private:
    bool isDeepSea(int column, int row) const;
    void chooseAbsentBlocks();
    void chooseObjectBlocks();
    void placeDungeons();
    void unmakeLateYears();
    bool isWildCoast(std::uint16_t corner) const;

    SampleOptions _options;
    SampleTerrain _terrain;
    std::vector<SampleTown> _towns;
    std::vector<SampleDungeon> _dungeons;
    std::bitset<65536> _absent;
    std::bitset<65536> _objects;
};
