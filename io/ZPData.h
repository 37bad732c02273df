#pragma once

#include <cstddef>
#include <vector>

/// Bytes that the holder owns. Bytes that are borrowed are a `std::span<const std::byte>`.
using ZPData = std::vector<std::byte>;
