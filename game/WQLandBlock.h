#pragma once

#include "game/WQIdentifier.h"
#include "game/WQStoredObject.h"

#include <array>

/// One square of the world: nine by nine vertices, each with a terrain word and a height index.
/// Vertices lie on the square's edges, so that neighbours share a row or a column of them.
///
///     0     u32        identifier 0xXXYYFFFF: column from the west, row from the south
///     4     u32        1 where the square has an object block
///     8     81 x u16   terrain words, column by column from the west, each from the south
///     170   81 x u8    height indexes in the same order
///     251   u8         padding
///
/// A terrain word, from the top bit: scenery 5 bits, unknown 4, terrain type 5, road 2.
class WQLandBlock final : public WQCellObject {
  public:
    static constexpr unsigned kRecordSize = 252;
    static constexpr unsigned kSide = 9;
    static constexpr unsigned kVertexCount = kSide * kSide;

    using Topology = std::array<std::uint16_t, kVertexCount>;
    using Height = std::array<std::uint8_t, kVertexCount>;

    WQLandBlock(ZPDataCursor &cursor, ZPGorvaneClientData *clientData);

    /// Index in both grids; x to the east, y to the north, each below 9.
    static constexpr unsigned indexOfVertex(unsigned x, unsigned y) { return x * kSide + y; }

    std::uint32_t objectBlockPresent() const { return _objectBlockPresent; }
    /// Exactly 1 says yes; other values, with or without that bit, do not.
    bool hasObjectBlock() const { return _objectBlockPresent == 1; }
    const Topology &topology() const { return _topology; }
    /// Indexes into the region record's table of heights.
    const Height &height() const { return _height; }

    std::uint8_t averageHeight() const;
    bool isAllDeepWater() const;
    /// Whether any vertex is not water (terrain types 18 to 20).
    bool isPassable() const;

    const char *className() const override { return "WQLandBlock"; }
    std::string description() const override;
    /// All fields and grids.
    std::string dumpText() const override;
    /// Replaces the buffer by the record without its padding byte, 251 bytes.
    void writeToData(ZPData &buffer) const;

    // Editing. The `changeLandTypes` operations overwrite the terrain with test patterns that show,
    // in the game, which number a land type goes by.
    void clearObjectBlockFlag() { _objectBlockPresent = 0; }
    /// Takes the scenery from every vertex.
    void changeTopBits();
    void changeLandTypes(std::uint16_t n);
    void changeLandTypes2(std::uint16_t n);
    void changeLandTypes3(std::uint16_t n);
    void changeLandTypes4();

  private:
    /// Grows with the place of the block.
    std::uint16_t markerIndex() const;
    void logMarker(char group, std::uint16_t marker) const;
    std::uint16_t number() const { return WQLandBlockNumberOfIdentifier(identifier()); }
    std::uint8_t column() const { return WQColumnOfLandBlock(number()); }
    std::uint8_t row() const { return WQRowOfLandBlock(number()); }

    std::uint32_t _objectBlockPresent;
    Topology _topology;
    Height _height;
};
