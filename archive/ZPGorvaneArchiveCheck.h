#pragma once

#include "archive/ZPGorvaneBlockMap.h"
#include "archive/ZPGorvaneDataFile.h"
#include "archive/ZPGorvaneFinding.h"

/// Holds the structure of an archive against itself: header, directory tree, free blocks, the chain
/// of every file, and which blocks are used by whom. Reads the archive on its own, so that damage
/// that the library passes over is found too.
class ZPGorvaneArchiveCheck {
  public:
    /// Borrows the archive, which has its storage.
    explicit ZPGorvaneArchiveCheck(const ZPGorvaneDataFile &dataFile);

    /// Once: the findings are the caller's then.
    [[nodiscard]] ZPGorvaneFindings run();

  private:
    struct Bounds {
        // Identifiers that may stand in a node lie between these, both left out.
        std::int64_t above, below;
    };
    /// What a step along a chain found.
    struct ChainEnd {
        std::uint64_t blockCount = 0;
        bool isSound = false;
    };

    void checkHeader();
    void checkDirectory(std::uint32_t offset, unsigned depth, Bounds bounds);
    void checkNode(std::uint32_t offset, std::span<const std::byte> node, unsigned depth,
                   Bounds bounds);
    std::vector<ZPGorvaneFileEntry> readEntries(std::uint32_t offset, ZPDataCursor &cursor,
                                                std::uint32_t count, Bounds bounds);
    void checkFreeChain();
    void checkFiles();
    void checkFile(std::uint32_t index);
    void findLostBlocks();

    template <class Fault>
    ChainEnd followChain(std::uint32_t first, std::uint32_t owner, Fault fault);
    std::string describeOwner(std::uint32_t owner) const;
    void add(ZPGorvaneFinding::Severity severity, const char *kind, std::uint64_t offset,
             std::string cause, std::optional<std::uint32_t> identifier = std::nullopt);

    const ZPGorvaneDataFile &_dataFile;
    const ZPGorvaneBlockStorage &_storage;
    ZPGorvaneBlockMap _map;
    /// In the order of the tree.
    std::vector<ZPGorvaneFileEntry> _entries;
    std::optional<unsigned> _leafDepth;
    ZPGorvaneFindings _findings;
};
