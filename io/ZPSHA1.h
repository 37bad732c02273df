#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>

using ZPSHA1Digest = std::array<std::byte, 20>;

/// Safe from several threads.
ZPSHA1Digest ZPSHA1DigestOfData(std::span<const std::byte> data);
/// The digest as 40 lower-case hexadecimal digits.
std::string ZPSHA1DigestString(std::span<const std::byte> data);
