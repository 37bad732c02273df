#pragma once

#include "archive/ZPGorvaneBlockMap.h"
#include "archive/ZPGorvaneDataFile.h"
#include "archive/ZPGorvaneFinding.h"

/// Holds the structure of an archive against itself: header, directory tree, free blocks, the chain
/// of every file, and which blocks are used by whom. Reads the archive on its own, so that damage
/// that the library passes over is found too; its files are those of the library's index, whatever
/// is wrong with the nodes that list them.
///
/// Where the chains of two files meet, neither file can be trusted, and the one that seems to stray
/// is told from the other: see `isFileStraying`.
class ZPGorvaneArchiveCheck {
  public:
    /// Borrows the archive, which has its storage and its index loaded.
    explicit ZPGorvaneArchiveCheck(const ZPGorvaneDataFile &dataFile);

    /// Once: the findings are the caller's then.
    [[nodiscard]] ZPGorvaneFindings run();

  private:
    struct Bounds {
        // Identifiers that may stand in a node lie between these, both left out.
        std::int64_t above, below;
    };
    /// How far a chain could be followed.
    struct ChainEnd {
        std::uint64_t blockCount = 0, length = 0;
        bool isSound = false;
    };
    /// A file, by its place among the entries, whose chain has come to a block of another's.
    struct Meeting {
        std::uint32_t file, owner;
        std::uint32_t block;
        /// Of the file's chain ahead of the block.
        std::uint32_t previous;
        std::uint64_t blocksBefore;
    };

    void checkHeader();
    /// `place` is where the link to the node stands.
    void checkDirectory(std::uint32_t offset, std::uint64_t place, unsigned depth, Bounds bounds);
    void checkNode(std::uint32_t offset, std::span<const std::byte> node, unsigned depth,
                   Bounds bounds);
    std::vector<ZPGorvaneFileEntry> readEntries(std::uint32_t offset, ZPDataCursor &cursor,
                                                std::uint32_t count, Bounds bounds);
    void checkFreeChain();
    void checkFiles();
    void checkFile(std::uint32_t index);
    void checkMeeting(const Meeting &meeting);
    bool isFileStraying(const Meeting &meeting);
    std::uint64_t blocksNeeded(const ZPGorvaneFileEntry &entry) const;
    std::uint64_t countBlocks(std::uint32_t first, std::uint64_t most);
    std::uint32_t blockBefore(std::uint32_t first, std::uint32_t block);
    void addReadersFindings();
    void findLostBlocks();

    template <class Fault>
    ChainEnd followChain(std::uint32_t first, std::uint32_t owner, Fault fault);
    std::string describeOwner(std::uint32_t owner) const;
    void add(ZPGorvaneFinding::Severity severity, const char *kind, std::uint64_t offset,
             std::string cause, std::optional<std::uint32_t> identifier = std::nullopt);

    const ZPGorvaneDataFile &_dataFile;
    const ZPGorvaneBlockStorage &_storage;
    ZPGorvaneBlockMap _map;
    /// By identifier.
    const ZPGorvaneFileEntryMap &_entries;
    std::vector<Meeting> _meetings;
    /// Of each file, whether its chain was followed to its end and is as long as its size wants it.
    std::vector<bool> _fits;
    /// Of each file, whether another was said to run into it.
    std::vector<bool> _isRunInto;
    /// So many steps are left for telling who strays.
    std::uint64_t _stepsLeft;
    std::optional<unsigned> _leafDepth;
    ZPGorvaneFindings _findings;
};
