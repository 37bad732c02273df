#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

inline constexpr std::uint32_t SampleRegionIdentifier = 0x13000000;

/// The region record: the world's name, the land heights, its calendar and weather, the scenery and
/// the 33 land types with their textures. Every list in it holds something.
std::vector<std::byte> SampleRegionRecord();
