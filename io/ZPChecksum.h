#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// The CRC-32 of gzip and PNG over bytes that follow others with the checksum `sum`, 0 for none.
std::uint32_t ZPCRC32(std::uint32_t sum, std::span<const std::byte> bytes);
/// The Adler-32 of zlib over bytes that follow others with the checksum `sum`, 1 for none.
std::uint32_t ZPAdler32(std::uint32_t sum, std::span<const std::byte> bytes);
