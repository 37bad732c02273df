#pragma once

#include "tests/BlockFileBytes.h"

#include <map>
#include <string_view>

/// A sound archive of any of the three header versions, laid out by hand: a root with the middle
/// entry, a leaf to each side of it, the chains of the files, and all other blocks of its mebibyte
/// in the free chain. A test may poke any word of it afterwards.
///
///     version 3: 24 bytes an entry, 2: 16 bytes, 1: 12 bytes
struct FamilyArchive {
    static constexpr std::uint32_t kBlockSize = 1024, kBlocks = 1024;

    struct Entry {
        std::uint32_t offset, size, mtime;
    };

    explicit FamilyArchive(unsigned headerVersion)
        : version(headerVersion), file(kBlocks, kBlockSize) {}

    void addFile(std::uint32_t identifier, const ZPData &contents,
                 std::uint32_t mtime = 1000000000) {
        entries[identifier] = {addChain(contents), static_cast<std::uint32_t>(contents.size()),
                               mtime};
    }
    void addFile(std::uint32_t identifier, std::string_view contents) {
        const auto bytes = std::as_bytes(std::span(contents.data(), contents.size()));
        addFile(identifier, ZPData(bytes.begin(), bytes.end()));
    }

    /// Adds tree, free chain and header. At least three files.
    void finish() {
        const auto middle = std::next(entries.begin(), static_cast<long>(entries.size() / 2));
        const std::map<std::uint32_t, Entry> west(entries.begin(), middle),
            east(std::next(middle), entries.end());
        leaves = {addChain(node({}, west)), addChain(node({}, east))};
        root = addChain(node(leaves, {*middle}));
        file.rootOffset = root;
        firstFree = next;
        for (std::uint32_t offset = next; offset < kBlocks * kBlockSize; offset += kBlockSize)
            poke(offset,
                 0x80000000 |
                     (offset + kBlockSize < kBlocks * kBlockSize ? offset + kBlockSize : 0));
        lastFree = (kBlocks - 1) * kBlockSize;
        file.putHeader(version, firstFree, lastFree,
                       (kBlocks * kBlockSize - firstFree) / kBlockSize);
    }

    void poke(std::size_t offset, std::uint32_t word) { file.put(offset, words({word})); }
    std::filesystem::path writeToPath(const std::filesystem::path &path) const {
        return file.writeToPath(path);
    }

    std::size_t entrySize() const { return version == 3 ? 24 : version == 2 ? 16 : 12; }
    /// Where an entry's record stands in the file, by its place in a node.
    std::size_t entryPlace(std::uint32_t nodeOffset, std::size_t index) const {
        return placeInChain(nodeOffset, 252 + index * entrySize());
    }
    /// Where a byte of a chain's payload stands; chains have neighbouring blocks.
    static std::size_t placeInChain(std::uint32_t offset, std::size_t byte) {
        return offset + byte / (kBlockSize - 4) * kBlockSize + 4 + byte % (kBlockSize - 4);
    }

    unsigned version;
    BlockFileBytes file;
    std::map<std::uint32_t, Entry> entries;
    std::vector<std::uint32_t> leaves;
    std::uint32_t root = 0, firstFree = 0, lastFree = 0;

  private:
    std::uint32_t addChain(const ZPData &contents) {
        const std::uint32_t first = next;
        std::size_t done = 0;
        do {
            const std::size_t size = std::min<std::size_t>(kBlockSize - 4, contents.size() - done);
            const auto part = contents.begin() + static_cast<long>(done);
            file.put(next + 4, ZPData(part, part + static_cast<long>(size)));
            done += size;
            poke(next, done < contents.size() ? next + kBlockSize : 0);
            next += kBlockSize;
        } while (done < contents.size());
        return first;
    }

    ZPData node(const std::vector<std::uint32_t> &children,
                const std::map<std::uint32_t, Entry> &files) const {
        ZPData offsets, records;
        for (const std::uint32_t child : children)
            ZPAppendLittleInt32(offsets, child);
        for (const auto &[identifier, entry] : files) {
            if (version == 3)
                ZPAppendLittleInt32(records, 0x00020001);
            for (const std::uint32_t word : {identifier, entry.offset, entry.size})
                ZPAppendLittleInt32(records, word);
            if (version != 1)
                ZPAppendLittleInt32(records, entry.mtime);
            if (version == 3)
                ZPAppendLittleInt32(records, 0);
        }
        return nodeBytes(offsets, static_cast<std::uint32_t>(files.size()), records,
                         252 + 62 * entrySize());
    }

    std::uint32_t next = kBlockSize;
};
