#pragma once

#include "archive/ZPGorvaneFileEntry.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

class ZPGorvaneDataFile;
struct ZPGorvaneArchiveFamily;

/// One node of the directory tree and, on request, all nodes below it. Identifiers increase from
/// left to right as in a B-tree. A node is the payload of one chain:
///
///     0     62 x u32  offsets of the children, ended by 0 or 0xCDCDCDCD where there are fewer
///     248   u32       number of files n
///     252   n x entry record of the archive family
///
/// Faults of a node's content are logged with its offset ("dir %08x> ..."), collected by the data
/// file, and reading goes on. A
/// node that was read already is not followed again, nor is a tree deeper than any real one or with
/// more nodes than the file has room for.
///
/// A node owns the nodes below it, and refers to its archive's family.
class ZPGorvaneDirectory {
  public:
    explicit ZPGorvaneDirectory(const ZPGorvaneArchiveFamily &family) : _family(family) {}

    /// Null, logged, when the node's chain cannot be read. Throws ZPRangeException when the node's
    /// own entries pass its end; of a child that does, what can be read is kept, and it is logged.
    [[nodiscard]] static std::unique_ptr<ZPGorvaneDirectory>
    initWithDataFile(const ZPGorvaneDataFile &dataFile, std::uint32_t offset,
                     bool loadSubdirectories);

    /// Finds a file by walking down from a node, reading only the nodes on the way.
    [[nodiscard]] static std::optional<ZPGorvaneFileEntry>
    searchForFileWithIdentifier(std::uint32_t identifier, const ZPGorvaneDataFile &inDataFile,
                                std::uint32_t directoryOffset);

    /// Calls the block with this node, then with all below it, each before its children.
    void enumerateDirectoriesUsingBlock(
        const std::function<void(const ZPGorvaneDirectory &)> &block) const;
    /// How many entries the node and all below it have.
    std::size_t entryCount() const;
    /// Copies all these entries, using all processors, from left to right, which is by identifier
    /// where the tree is sound. `into` has room for just that many.
    void copyEntriesFromLeftToRight(std::span<ZPGorvaneFileEntry> into) const;

    std::uint32_t offset() const { return _offset; }
    const std::vector<ZPGorvaneFileEntry> &files() const { return _files; }
    /// Filled only when subdirectories were loaded ...
    const std::vector<std::unique_ptr<ZPGorvaneDirectory>> &subdirectories() const {
        return _subdirectories;
    }
    /// ... and this only when they were not.
    const std::vector<std::uint32_t> &subdirectoryOffsets() const { return _subdirectoryOffsets; }

    /// Reading leaves it null, so that every node read counts as a root.
    const ZPGorvaneDirectory *parent() const { return _parent; }
    void setParent(const ZPGorvaneDirectory *parent) { _parent = parent; }
    /// For whoever changes a node: whether it differs from what the archive has. Reading leaves it
    /// false.
    bool isDirty() const { return _isDirty; }
    void setIsDirty(bool isDirty) { _isDirty = isDirty; }
    bool isRootDirectory() const { return _parent == nullptr; }
    bool isLeaf() const { return _subdirectories.empty(); }
    std::string description() const;

  private:
    friend class ZPGorvaneDirectoryReader;

    const ZPGorvaneArchiveFamily &_family;
    std::uint32_t _offset = 0;
    const ZPGorvaneDirectory *_parent = nullptr;
    bool _isDirty = false;
    std::vector<ZPGorvaneFileEntry> _files;
    std::vector<std::unique_ptr<ZPGorvaneDirectory>> _subdirectories;
    std::vector<std::uint32_t> _subdirectoryOffsets;
};
