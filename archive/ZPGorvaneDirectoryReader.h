#pragma once

#include "archive/ZPGorvaneDataFile.h"

#include <mutex>
#include <unordered_map>

/// Reads nodes of one archive, remembering which it has read. What is wrong is collected by the
/// data file, and logged each time that it is met.
///
/// A sound tree is read by all processors. Whatever there is to say of a tree must be said in
/// order, and which of two links to the same node counts must not depend on chance; so a reader
/// that works in parallel only notes that it has something to report, and the tree is read again by
/// one that reports.
class ZPGorvaneDirectoryReader {
  public:
    /// What was read of a node, with the exception that ended it, if one did.
    struct Node {
        std::unique_ptr<ZPGorvaneDirectory> directory;
        std::optional<ZPRangeException> exception;
    };
    struct Tree {
        Node root;
        ZPGorvaneLostIdentifiers lost;
    };

    [[nodiscard]] static Node readOneNode(const ZPGorvaneDataFile &dataFile, std::uint32_t offset);
    /// Uses all processors and, where there is anything to say of the tree, reads it a second time.
    [[nodiscard]] static Tree readTree(const ZPGorvaneDataFile &dataFile, std::uint32_t offset);

    /// Where in the file the link to a node's child stands: the place of what is wrong with it,
    /// since the link may lead anywhere. Where blocks are small, the last link of the first one.
    static std::uint64_t placeOfLink(const ZPGorvaneBlockStorage &storage, std::uint32_t node,
                                     std::size_t index) {
        return std::uint64_t{node} + ZPGorvaneLayout::kLinkSize +
               std::min<std::uint64_t>(4 * index, storage.payloadSize() - 4);
    }

  private:
    /// `probing` reads one node without a word.
    enum class Mode { oneNode, probing, parallel, reporting };
    static constexpr std::size_t kBitsPerWord = 64;

    /// A child that lies behind those which its node claims to have: left there when the node was
    /// larger, or lost.
    struct ChildLeftOut {
        std::uint32_t node, fileCount, child;
        const ZPGorvaneDirectory *directory;
    };
    /// What of a node could not be read.
    struct Loss {
        /// Which of the node's children, ascending.
        std::vector<std::size_t> children;
        std::size_t childCount = 0;
        bool lacksEntries = false, lacksChildren = false, isOutOfOrder = false;
    };
    struct Bounds {
        // Identifiers that may stand in a node lie between these, both left out.
        std::int64_t above, below;
    };

    ZPGorvaneDirectoryReader(const ZPGorvaneDataFile &dataFile, Mode mode);

    bool readsTree() const { return _mode == Mode::parallel || _mode == Mode::reporting; }
    bool isSilent() const { return _mode == Mode::parallel || _mode == Mode::probing; }
    [[nodiscard]] bool markAsRead(std::uint32_t offset);
    bool isRead(std::uint32_t offset) const;
    bool isProbablyNode(std::uint32_t offset) const;

    /// `place` is where the link to the node stands.
    Node readNode(std::uint32_t offset, std::uint64_t place, unsigned depth);
    std::optional<std::span<const std::byte>> readBytes(std::uint32_t offset, std::uint64_t place,
                                                        ZPData &scratch);
    void readChildren(ZPGorvaneDirectory &node, ZPDataCursor &cursor, unsigned depth);
    void loadChildren(ZPGorvaneDirectory &node, unsigned depth);
    std::unique_ptr<ZPGorvaneDirectory> loadChild(const ZPGorvaneDirectory &node,
                                                  std::uint32_t offset, std::size_t index,
                                                  unsigned depth);
    void readFiles(ZPGorvaneDirectory &node, ZPDataCursor &cursor);
    void checkOrder(const ZPGorvaneDirectory &node);
    void noteChildAfterLast(const ZPGorvaneDirectory &node, std::uint32_t fileCount,
                            ZPDataCursor &cursor);
    std::vector<ChildLeftOut> childrenLeftOut() const;
    void reportChildrenLeftOut();

    void report(std::uint64_t place, const std::string &cause, const std::string &line);
    void reportOfNode(std::uint32_t node, std::uint64_t place, const char *format, ...)
        __attribute__((format(printf, 4, 5)));
    /// Null where losses are of no interest.
    Loss *lossOf(const ZPGorvaneDirectory &node) {
        return _mode == Mode::reporting ? &_losses[&node] : nullptr;
    }
    void addLosses(const ZPGorvaneDirectory &node, Bounds bounds,
                   ZPGorvaneLostIdentifiers &into) const;

    const ZPGorvaneDataFile &_dataFile;
    const ZPGorvaneBlockStorage &_storage;
    const Mode _mode;
    std::atomic<bool> _hasFaults = false;
    /// A bit for each block of the file.
    std::vector<std::atomic<std::uint64_t>> _nodesRead;
    /// The root and the nodes that were followed, up to as many as fit into the file. Chains may
    /// run together, so that a small file could list more nodes than memory holds.
    std::atomic<std::size_t> _nodeCount = 1;
    const std::size_t _maximumNodes;
    std::mutex _childrenAfterLastLock;
    std::vector<ChildLeftOut> _childrenAfterLast;
    std::unordered_map<const ZPGorvaneDirectory *, Loss> _losses;
};
