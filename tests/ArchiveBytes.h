#pragma once

#include "tests/TestBytes.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <span>
#include <string_view>
#include <vector>

/// Writes archives of the version 3 layout byte by byte, for tests to read. Apart from the tree's
/// shape nothing is looked after: a test may give an entry any place and poke any byte.
class ArchiveBytes {
  public:
    static constexpr std::size_t kBlockSize = 256;
    static constexpr std::size_t kEntriesPerNode = 61;

    struct Entry {
        std::uint32_t fileOffset = 0;
        std::uint32_t fileSize = 0;
        std::uint32_t mtime = 0;
        std::uint32_t version = 1;
    };

    ArchiveBytes() : _bytes(kBlockSize * 2) {}

    /// Stores contents as one chain of neighbouring blocks; gives the offset of its first block.
    std::uint32_t addChain(std::span<const std::byte> contents) {
        const auto first = static_cast<std::uint32_t>(_bytes.size());
        do {
            const auto part = contents.first(std::min(contents.size(), kBlockSize - 4));
            contents = contents.subspan(part.size());
            const std::size_t end = _bytes.size() + kBlockSize;
            ZPAppendLittleInt32(_bytes, contents.empty() ? 0 : static_cast<std::uint32_t>(end));
            _bytes.insert(_bytes.end(), part.begin(), part.end());
            _bytes.resize(end);
        } while (!contents.empty());
        return first;
    }

    void addFile(std::uint32_t identifier, std::span<const std::byte> contents) {
        addEntry(identifier,
                 {addChain(contents), static_cast<std::uint32_t>(contents.size()), 0, 1});
    }
    void addFile(std::uint32_t identifier, std::string_view contents) {
        addFile(identifier, std::as_bytes(std::span(contents.data(), contents.size())));
    }
    /// Lists a file without storing anything.
    void addEntry(std::uint32_t identifier, const Entry &entry) { _entries[identifier] = entry; }

    /// Lists files 1 to `count`, of no bytes.
    void addEntries(std::uint32_t count) {
        for (std::uint32_t number = 1; number <= count; ++number)
            addEntry(number, {});
    }

    /// Overwrites a little-endian word.
    void poke(std::size_t offset, std::uint32_t word) {
        ZPData bytes;
        ZPAppendLittleInt32(bytes, word);
        std::ranges::copy(bytes, _bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    }

    /// Adds the directory and the header, and writes the archive. Called once, at the end.
    void writeToPath(const std::filesystem::path &path) {
        const std::vector<std::pair<std::uint32_t, Entry>> entries(_entries.begin(),
                                                                   _entries.end());
        const std::uint32_t root = addNode(entries);
        const std::uint32_t header[] = {
            0x5442, kBlockSize, static_cast<std::uint32_t>(_bytes.size()), 0, 0, 0, 0, 0, root};
        poke(256, 0x004C5000);
        for (std::size_t index = 0; index < std::size(header); ++index)
            poke(320 + 4 * index, header[index]);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char *>(_bytes.data()),
                   static_cast<std::streamsize>(_bytes.size()));
    }

  private:
    std::uint32_t addNode(std::span<const std::pair<std::uint32_t, Entry>> entries) {
        ZPData children, files;
        std::size_t childCount = 0;
        if (entries.size() > kEntriesPerNode)
            childCount = std::min(kEntriesPerNode + 1, entries.size() / (kEntriesPerNode + 1) + 1);
        // The entries that stay here part the children's.
        const std::size_t own = childCount > 0 ? childCount - 1 : entries.size();
        std::size_t left = entries.size() - own;
        for (std::size_t index = 0; index < std::max(childCount, own); ++index) {
            if (index < childCount) {
                const std::size_t size = left / (childCount - index);
                left -= size;
                ZPAppendLittleInt32(children, addNode(entries.first(size)));
                entries = entries.subspan(size);
            }
            if (index < own) {
                const auto &[identifier, entry] = entries.front();
                for (const std::uint32_t word :
                     {entry.version, identifier, entry.fileOffset, entry.fileSize, entry.mtime, 0u})
                    ZPAppendLittleInt32(files, word);
                entries = entries.subspan(1);
            }
        }
        return addChain(nodeBytes(children, static_cast<std::uint32_t>(own), files));
    }

    ZPData _bytes;
    std::map<std::uint32_t, Entry> _entries;
};
