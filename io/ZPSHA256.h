#pragma once

#include <array>
#include <cstddef>
#include <span>

using ZPSHA256Digest = std::array<std::byte, 32>;

/// Safe from several threads.
ZPSHA256Digest ZPSHA256DigestOfData(std::span<const std::byte> data);
