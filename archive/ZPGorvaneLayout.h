#pragma once

#include <cstddef>
#include <cstdint>

/// The numbers that an archive's layout consists of. See ZPGorvaneBlockStorage for its blocks and
/// ZPGorvaneDirectory for its nodes.
///
/// The header, by version; byte offsets in the file, every field a little-endian u32:
///
///                      version 1   version 2   version 3
///     format check         -           -          256      0x004C5000
///     magic               300         300         320      0x5442
///     block size          304         304         324
///     file size           308         308         328
///     content type        312         312         332
///     content subtype      -          316         336
///     first free block    316         320         340
///     last free block     320         324         344
///     free block count    324         328         348
///     root offset         328         332         352
namespace ZPGorvaneLayout {

inline constexpr std::uint32_t kFormatCheck = 0x004C5000, kMagic = 0x5442;
inline constexpr std::size_t kFormatCheckPlace = 256;

constexpr std::size_t magicPlace(std::uint32_t version) {
    return version == 3 ? 320 : 300;
}
constexpr std::size_t rootPlace(std::uint32_t version) {
    return magicPlace(version) + (version == 1 ? 28 : 32);
}
constexpr std::size_t headerEnd(std::uint32_t version) {
    return rootPlace(version) + 4;
}

/// Ahead of each block's payload: the offset of the chain's next block.
inline constexpr std::uint32_t kLinkSize = 4;
/// A link and a byte of payload at least, in whole words.
inline constexpr std::uint32_t kLeastBlockSize = 8;
/// Set in the link of a free block.
inline constexpr std::uint32_t kFreeBit = 0x80000000;
/// Archives grow by this.
inline constexpr std::uint32_t kFileSizeUnit = 1 << 20;

inline constexpr std::uint32_t kFileCountPlace = 248;
inline constexpr std::size_t kNodeHeaderSize = 252;
inline constexpr std::size_t kMostChildren = 62;
/// A node has room for one entry more than may stand in it.
inline constexpr std::size_t kEntriesPerNode = 62;
inline constexpr std::uint32_t kMostFiles = 61;
/// In place of a child that is not there; so is 0.
inline constexpr std::uint32_t kUnusedChild = 0xCDCDCDCD;
/// 2^32 files make a tree of seven levels even when its nodes are half empty.
inline constexpr unsigned kMostLevels = 32;

} // namespace ZPGorvaneLayout
