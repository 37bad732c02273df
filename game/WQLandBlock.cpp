#include "game/WQLandBlock.h"

#include "game/WQMapCoordinate.h"
#include "io/ZPMutableDataCursor.h"
#include "io/ZPPointText.h"
#include "io/ZPSystemLog.h"

#include <algorithm>
#include <numeric>

WQLandBlock::WQLandBlock(ZPDataCursor &cursor, ZPGorvaneClientData *clientData)
    : WQCellObject(cursor, clientData), _objectBlockPresent(cursor.readLittleInt32()) {
    // One check for both grids and the padding: a run decodes some 65,000 blocks.
    constexpr std::size_t kPaddingSize = 1;
    constexpr std::size_t kRest = sizeof _topology + sizeof _height + kPaddingSize;
    const char *operation = cursor.remaining() < sizeof _topology ? "readLittleInt16" : "readByte";
    const auto bytes = cursor.readSpanOfLength(kRest, operation).data();
    std::memcpy(_topology.data(), bytes, sizeof _topology);
    std::memcpy(_height.data(), bytes + sizeof _topology, sizeof _height);
    if constexpr (std::endian::native == std::endian::big)
        for (std::uint16_t &word : _topology)
            word = __builtin_bswap16(word);
}

std::uint8_t WQLandBlock::averageHeight() const {
    return static_cast<std::uint8_t>(std::accumulate(_height.begin(), _height.end(), 0u) /
                                     kVertexCount);
}

// The two tests take six bits for the terrain type where the dump takes five: bit 7 counts. They
// look at all vertices without a way out of the loop, which the compiler turns into vectors.

bool WQLandBlock::isAllDeepWater() const {
    unsigned differences = 0;
    for (const std::uint16_t word : _topology)
        differences |= (word & 0xFCu) ^ 0x50u;
    return differences == 0;
}

bool WQLandBlock::isPassable() const {
    constexpr unsigned kFirstWaterType = 18, kLastWaterType = 20;
    bool isPassable = false;
    for (const std::uint16_t word : _topology)
        isPassable |= (word >> 2 & 0x3Fu) - kFirstWaterType > kLastWaterType - kFirstWaterType;
    return isPassable;
}

std::string WQLandBlock::description() const {
    return ZPFormat("<%s:%p> (id: %08x, hasObjectBlock? %d, averageHeight: %u)", className(),
                    static_cast<const void *>(this), identifier(), hasObjectBlock() ? 1 : 0,
                    averageHeight());
}

void WQLandBlock::writeToData(ZPData &buffer) const {
    ZPMutableDataCursor cursor;
    cursor.reserve(8 + sizeof _topology + sizeof _height);
    cursor.writeLittleInt32(identifier());
    cursor.writeLittleInt32(_objectBlockPresent);
    for (const std::uint16_t word : _topology)
        cursor.writeLittleInt16(word);
    cursor.writeData(std::as_bytes(std::span(_height)));
    buffer = cursor.takeData();
}

// -- dump

namespace {

/// Nine lines of nine values, each `digits` hexadecimal digits wide.
template <class ValueOfVertex>
void appendGrid(std::string &text, const char *heading, const char *linePrefix, int digits,
                ValueOfVertex valueOfVertex) {
    text.append(40, '-').append("\n").append(heading).append("\n");
    for (unsigned line = 0; line < WQLandBlock::kSide; ++line) {
        text += linePrefix;
        for (unsigned index = 0; index < WQLandBlock::kSide; ++index) {
            text += ZPFormat("%0*x ", digits, static_cast<unsigned>(valueOfVertex(line, index)));
            text += index + 1 < WQLandBlock::kSide ? ' ' : '\n';
        }
    }
}

} // namespace

std::string WQLandBlock::dumpText() const {
    const WQMapLocation corner = WQMapCoordinateForCellID(identifier());
    std::string text = ZPFormat("identifier: %08x\n", identifier());
    text += ZPFormat("object block present: %08x\n", _objectBlockPresent);
    text += ZPFormat("isPassable? %u\n", isPassable() ? 1u : 0u);
    text += ZPFormat("Coords: %s (%08x %04x %s)\n", WQStringFromMapCoordinate(corner).c_str(),
                     identifier(), static_cast<unsigned>(number()),
                     ZPStringFromPoint(corner.x, corner.y).c_str());

    // Terrain like a map, the north row first; heights in the order in which they are stored.
    const auto appendTopology = [&](const char *heading, const char *linePrefix, int digits,
                                    auto part) {
        appendGrid(text, heading, linePrefix, digits, [&](unsigned line, unsigned index) {
            return part(_topology[indexOfVertex(index, kSide - 1 - line)]);
        });
    };
    appendTopology("topology", "", 4, [](unsigned word) { return word; });
    appendTopology("topology (roads - bits 0-1)", "roads: ", 1,
                   [](unsigned word) { return word & 0x3; });
    appendTopology("topology (terrain - bits 2-6)", "terrain: ", 2,
                   [](unsigned word) { return word >> 2 & 0x1F; });
    appendTopology("topology (terrain objects - bits 11-15)", "other: ", 2,
                   [](unsigned word) { return word >> 11; });
    appendTopology("topology (unknown - bits 7-10)", "mid 4: ", 1,
                   [](unsigned word) { return word >> 7 & 0xF; });
    appendGrid(text, "height", "", 2,
               [&](unsigned line, unsigned index) { return _height[line * kSide + index]; });
    return text;
}
