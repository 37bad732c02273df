#pragma once

#include "sample/SampleWorld.h"

#include <cstddef>
#include <functional>
#include <vector>

// Records of the sample world's own: who lives where, what they trade and what is told of it. No
// program has classes for them. Little endian; packed is the integer of one, two or four bytes, and
// text a length and characters, padded to a multiple of four.
//
//     township, 0x40000001 and on
//         u32      identifier
//         text     name: u16 length, Windows-1252
//         2 x f32  place, in map coordinates, east and north
//         u16      bits 0-1 size, 2 harbour, 3-7 terrain type, 8-15 lamps
//         packed   count, and as many u32: its traders
//         padding to a multiple of four
//
//     trader, 0x41000001 and on
//         u32      identifier
//         text     name: packed length, Windows-1252
//         u32      flags: 0 buys, 1 repairs, 2 trades at night, 4 is on the road
//         u32      township
//         u16      number of wares, and for each
//             u32      image
//             u32      price
//             i16      stock, below zero where some are owed
//         text     greeting: packed length in UTF-16 units, UTF-16
//
//     chronicle, 0x42000001 and on
//         u32      identifier
//         u8       number of entries, and for each
//             u16      year, big endian
//             u8       bits 0-3 month, 4-7 weather
//             u8       number of townships concerned, and as many u32
//             text     what happened: u16 length, Windows-1252

/// Calls `add` with each of them, by identifier.
void SampleForEachLoreRecord(
    const SampleWorld &world,
    const std::function<void(std::uint32_t identifier, const std::vector<std::byte> &record)> &add);
