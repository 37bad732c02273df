#pragma once

#include "tests/TestBytes.h"

#include <filesystem>
#include <fstream>

/// A block file laid out by hand, word for word, with blocks of 1024 bytes unless a test says
/// otherwise. Nothing is checked or derived but the header's file size.
struct BlockFileBytes {
    ZPData bytes;
    std::uint32_t blockSize = 1024;
    std::uint32_t rootOffset = 0;

    explicit BlockFileBytes(unsigned blockCount, std::uint32_t size = 1024)
        : bytes(std::size_t{blockCount} * size), blockSize(size) {}

    void put(std::size_t offset, const ZPData &data) {
        if (bytes.size() < offset + data.size())
            bytes.resize(offset + data.size());
        std::copy(data.begin(), data.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    }

    /// Data over the given blocks, which are linked in this order.
    void putChain(std::initializer_list<std::uint32_t> blocks, const ZPData &data) {
        std::size_t done = 0;
        for (const auto *block = blocks.begin(); block != blocks.end(); ++block) {
            const std::size_t size = std::min<std::size_t>(blockSize - 4, data.size() - done);
            const auto part = data.begin() + static_cast<std::ptrdiff_t>(done);
            put(*block, words({std::next(block) != blocks.end() ? *std::next(block) : 0}));
            put(*block + 4, ZPData(part, part + static_cast<std::ptrdiff_t>(size)));
            done += size;
        }
    }

    /// Writes the header of a version; it must lie within the file.
    void putHeader(unsigned version, std::uint32_t firstFree = 0, std::uint32_t lastFree = 0,
                   std::uint32_t freeCount = 0) {
        const auto size = static_cast<std::uint32_t>(bytes.size());
        if (version == 1)
            put(300,
                words({0x5442, blockSize, size, 7, firstFree, lastFree, freeCount, rootOffset}));
        if (version != 1)
            put(version == 2 ? 300 : 320,
                words({0x5442, blockSize, size, 7, 8, firstFree, lastFree, freeCount, rootOffset}));
        if (version == 3)
            put(256, words({0x004C5000}));
    }

    std::filesystem::path writeToPath(const std::filesystem::path &path) const {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char *>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return path;
    }
};
