#pragma once

#include "io/ZPExtensions.h"

#include <initializer_list>
#include <string>
#include <string_view>

/// Bytes from pairs of hexadecimal digits; blanks between the pairs do not count.
inline ZPData hex(std::string_view text) {
    ZPData bytes;
    for (std::size_t at = 0; at + 1 < text.size(); at += text[at] == ' ' ? 1u : 2u)
        if (text[at] != ' ')
            bytes.push_back(
                static_cast<std::byte>(std::stoul(std::string(text.substr(at, 2)), nullptr, 16)));
    return bytes;
}

/// Little-endian 32-bit words.
inline ZPData words(std::initializer_list<std::uint32_t> values) {
    ZPData bytes;
    for (const std::uint32_t value : values)
        ZPAppendLittleInt32(bytes, value);
    return bytes;
}

inline ZPData joined(std::initializer_list<ZPData> parts) {
    ZPData bytes;
    for (const ZPData &part : parts)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

/// A node of a directory tree: children up to byte 248, a count, entries, zeros up to its size.
inline ZPData nodeBytes(ZPData children, std::uint32_t count, const ZPData &entries,
                        std::size_t size = 1740) {
    children.resize(248);
    ZPData bytes = joined({children, words({count}), entries});
    bytes.resize(size);
    return bytes;
}
