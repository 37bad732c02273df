#pragma once

#include <cstdint>
#include <string>

/// What a list of files says of one: its name, which it is, when it was changed, what it holds.
struct WQShortFileInfo {
    std::string file;
    std::uint32_t identifier = 0;
    /// Seconds since 1970-01-01 00:00 UTC.
    std::uint32_t mtime = 0;
    /// SHA-1 as 40 lower-case hexadecimal digits.
    std::string digest;
};
