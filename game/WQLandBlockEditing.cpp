// The editing operations of WQLandBlock. All arithmetic on terrain words wraps at 16 bits.

#include "game/WQLandBlock.h"
#include "io/ZPSystemLog.h"

#include <initializer_list>

namespace {

/// Terrain type 10 without a road, the ground on which the markers stand.
constexpr std::uint16_t kGround = 40;
/// The markers of the second group lie this many elements after those of the first.
constexpr unsigned kSecondGroup = 3;

std::uint16_t terrainWord(unsigned value) {
    return static_cast<std::uint16_t>(value);
}

void setWords(WQLandBlock::Topology &topology, std::initializer_list<unsigned> elements,
              unsigned shift, std::uint16_t word) {
    for (const unsigned element : elements)
        topology[element + shift] = word;
}

/// Two squares of three vertices each around the corners.
void setSquares(WQLandBlock::Topology &topology, unsigned shift, std::uint16_t corners,
                std::uint16_t others) {
    setWords(topology, {10, 46}, shift, corners);
    setWords(topology, {11, 19, 20, 37, 38, 47}, shift, others);
}

} // namespace

void WQLandBlock::changeTopBits() {
    for (std::uint16_t &word : _topology)
        word &= 0x07FF;
}

void WQLandBlock::changeLandTypes(std::uint16_t n) {
    for (unsigned x = 0; x < kSide; ++x)
        for (unsigned y = 0; y < kSide; ++y)
            _topology[indexOfVertex(x, y)] =
                terrainWord((x & y & 1) != 0 ? ((y >> 1) + 4u * row() - 400u) * 4u
                                             : (column() + n - 130u) * 4u);
}

std::uint16_t WQLandBlock::markerIndex() const {
    return terrainWord((column() & 1u) * 16u + 2u * row());
}

void WQLandBlock::logMarker(char group, std::uint16_t marker) const {
    ZPLog("%c) xx: 0x%02x, yy: 0x%02x, t2: 0x%02x, ind: %u", group, column(), row(), marker,
          static_cast<unsigned>(marker >> 2));
}

void WQLandBlock::changeLandTypes2(std::uint16_t n) {
    _topology.fill(kGround);
    const std::uint16_t first = terrainWord(markerIndex() * 4u - 800u);
    const std::uint16_t second = terrainWord(markerIndex() * 4u - 796u);
    logMarker('a', first);
    setSquares(_topology, 0, first, terrainWord(n * 4u));
    logMarker('b', second);
    setSquares(_topology, kSecondGroup, second, terrainWord(n * 4u));
}

void WQLandBlock::changeLandTypes3(std::uint16_t n) {
    _topology.fill(kGround);
    const std::uint16_t first = terrainWord(markerIndex() * 4u - 800u);
    const std::uint16_t second = terrainWord(markerIndex() * 4u - 796u);
    logMarker('a', terrainWord(n * 4u));
    setSquares(_topology, 0, terrainWord(n * 4u), first);
    logMarker('b', terrainWord(n * 4u));
    setSquares(_topology, kSecondGroup, terrainWord(n * 4u), second);
}

void WQLandBlock::changeLandTypes4() {
    _topology.fill(kGround);
    ZPLog("index: %u", terrainWord(markerIndex() - 200u));
    const auto mark = [&](char group, unsigned shift, std::uint16_t marker) {
        logMarker(group, marker);
        ZPLog("t1: %2x, t2: %2x, t3: %2x", 0u, marker, kGround);
        setWords(_topology, {10, 11, 38, 47}, shift, 0);
        setWords(_topology, {19, 46}, shift, kGround);
        setWords(_topology, {20, 37}, shift, marker);
    };
    mark('a', 0, terrainWord(markerIndex() * 4u - 800u));
    mark('b', kSecondGroup, terrainWord(markerIndex() * 4u - 796u));
}
