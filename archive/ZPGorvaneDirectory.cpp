#include "archive/ZPGorvaneDirectory.h"

#include "archive/ZPGorvaneDataFile.h"
#include "io/ZPParallel.h"
#include "io/ZPSystemLog.h"

#include <atomic>
#include <cstdarg>
#include <mutex>
#include <tuple>
#include <utility>

using namespace ZPGorvaneLayout;

namespace {

constexpr std::uint32_t kLeastFiles = 30;

} // namespace

/// Reads nodes of one archive, remembering which it has read.
///
/// A sound tree is read by all processors. Whatever there is to say of a tree must be said in
/// order, and which of two links to the same node counts must not depend on chance; so a reader
/// that works in parallel only notes that it has something to report, and the tree is read again by
/// one that reports.
class ZPGorvaneDirectory::Reader {
  public:
    /// `probing` reads one node without a word.
    enum class Mode { oneNode, probing, parallel, reporting };

    Reader(const ZPGorvaneDataFile &dataFile, Mode mode)
        : _dataFile(dataFile), _storage(*dataFile.blockStorage()), _mode(mode),
          _nodesRead(readsTree() ? _storage.blockCount() / kBitsPerWord + 1 : 0),
          _maximumNodes(_storage.blockCount() * _storage.blockSize() /
                        _dataFile.family().directorySize()) {}

    /// What was read of a node, with the exception that ended it, if one did.
    struct Result {
        std::unique_ptr<ZPGorvaneDirectory> node;
        std::optional<ZPRangeException> exception;
    };
    static Result readTree(const ZPGorvaneDataFile &dataFile, std::uint32_t offset);
    Result readNode(std::uint32_t offset, unsigned depth);
    /// Names children of nodes that claim to have fewer; after the tree was read.
    void reportChildrenLeftOut();
    bool hasFaults() const { return _hasFaults; }

  private:
    static constexpr std::size_t kBitsPerWord = 64;

    /// A child that lies behind those which its node claims to have.
    struct ChildLeftOut {
        std::uint32_t node, fileCount, child;
        auto operator<=>(const ChildLeftOut &) const = default;
    };

    bool readsTree() const { return _mode == Mode::parallel || _mode == Mode::reporting; }
    bool isSilent() const { return _mode == Mode::parallel || _mode == Mode::probing; }
    void report(const char *format, ...) __attribute__((format(printf, 2, 3)));
    [[nodiscard]] bool markAsRead(std::uint32_t offset);
    bool isRead(std::uint32_t offset) const;
    bool isProbablyNode(std::uint32_t offset) const;
    void noteChildLeftOut(const ZPGorvaneDirectory &node, std::uint32_t fileCount,
                          ZPDataCursor &cursor);
    void readChildren(ZPGorvaneDirectory &node, ZPDataCursor &cursor, unsigned depth);
    void loadChildren(ZPGorvaneDirectory &node, unsigned depth);
    std::unique_ptr<ZPGorvaneDirectory> loadChild(const ZPGorvaneDirectory &node,
                                                  std::uint32_t offset, unsigned depth);
    void readFiles(ZPGorvaneDirectory &node, ZPDataCursor &cursor);
    void checkOrder(const ZPGorvaneDirectory &node);

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
    std::mutex _childrenLeftOutLock;
    std::vector<ChildLeftOut> _childrenLeftOut;
};

/// Reads a tree by all processors and, where there is anything to say of it, a second time.
ZPGorvaneDirectory::Reader::Result
ZPGorvaneDirectory::Reader::readTree(const ZPGorvaneDataFile &dataFile, std::uint32_t offset) {
    Reader parallel(dataFile, Mode::parallel);
    Result root = parallel.readNode(offset, 1);
    if (!parallel.hasFaults() && !root.exception) {
        parallel.reportChildrenLeftOut();
        return root;
    }
    root = {};
    Reader reporting(dataFile, Mode::reporting);
    root = reporting.readNode(offset, 1);
    reporting.reportChildrenLeftOut();
    return root;
}

std::unique_ptr<ZPGorvaneDirectory>
ZPGorvaneDirectory::initWithDataFile(const ZPGorvaneDataFile &dataFile, std::uint32_t offset,
                                     bool loadSubdirectories) {
    if (dataFile.blockStorage() == nullptr)
        return nullptr;
    Reader::Result result = loadSubdirectories
                                ? Reader::readTree(dataFile, offset)
                                : Reader(dataFile, Reader::Mode::oneNode).readNode(offset, 1);
    if (result.exception)
        throw *result.exception;
    return std::move(result.node);
}

std::unique_ptr<ZPGorvaneDirectory>
ZPGorvaneDirectory::treeOfDataFile(const ZPGorvaneDataFile &dataFile) {
    if (dataFile.blockStorage() == nullptr)
        return nullptr;
    Reader::Result result = Reader::readTree(dataFile, dataFile.blockStorage()->rootOffset());
    if (result.exception)
        ZPLog("dir %08x> Caught exception: %s", result.node->offset(), result.exception->what());
    return std::move(result.node);
}

void ZPGorvaneDirectory::Reader::report(const char *format, ...) {
    _hasFaults = true;
    if (isSilent())
        return;
    va_list arguments;
    va_start(arguments, format);
    ZPLog("%s", ZPFormatArguments(format, arguments).c_str());
    va_end(arguments);
}

/// False where the node was read before.
bool ZPGorvaneDirectory::Reader::markAsRead(std::uint32_t offset) {
    const std::size_t block = offset / _storage.blockSize();
    if (block / kBitsPerWord >= _nodesRead.size())
        return true; // outside the file; its chain will say so
    const std::uint64_t bit = std::uint64_t{1} << block % kBitsPerWord;
    return (_nodesRead[block / kBitsPerWord].fetch_or(bit) & bit) == 0;
}

bool ZPGorvaneDirectory::Reader::isRead(std::uint32_t offset) const {
    const std::size_t block = offset / _storage.blockSize();
    return block / kBitsPerWord < _nodesRead.size() &&
           (_nodesRead[block / kBitsPerWord] >> block % kBitsPerWord & 1) != 0;
}

ZPGorvaneDirectory::Reader::Result ZPGorvaneDirectory::Reader::readNode(std::uint32_t offset,
                                                                        unsigned depth) {
    using Logging = ZPGorvaneBlockStorage::Logging;
    // The search for the version may have said it.
    const bool isKnown = offset != 0 && offset == _dataFile.unreadableNode();
    ZPData scratch;
    ZPError error;
    const auto size = static_cast<std::uint32_t>(_dataFile.family().directorySize());
    const auto bytes = _storage.readBytesFromBlocksAtOffset(
        offset, size, scratch, &error,
        isSilent() || isKnown ? Logging::nothing : Logging::exceptions);
    if (!bytes) {
        _hasFaults = true;
        if (!isKnown)
            report("Error: %s", error.description().c_str());
        return {};
    }
    std::ignore = markAsRead(offset);

    Result result{std::make_unique<ZPGorvaneDirectory>(_dataFile.family()), std::nullopt};
    ZPGorvaneDirectory &node = *result.node;
    node._offset = offset;
    ZPDataCursor cursor(*bytes);
    try {
        readChildren(node, cursor, depth);
        readFiles(node, cursor);
    } catch (const ZPRangeException &exception) {
        result.exception = exception;
    }
    checkOrder(node);
    return result;
}

void ZPGorvaneDirectory::Reader::readChildren(ZPGorvaneDirectory &node, ZPDataCursor &cursor,
                                              unsigned depth) {
    cursor.setOffset(kFileCountPlace);
    const std::uint32_t fileCount = cursor.readLittleInt32();
    cursor.setOffset(0);
    bool isEnded = false;
    for (std::size_t index = 0; index < kMostChildren && index <= fileCount; ++index) {
        const std::uint32_t child = cursor.readLittleInt32();
        isEnded = child == 0 || child == kUnusedChild;
        if (isEnded)
            break;
        if (child % _storage.blockSize() != 0)
            report("dir %08x> Subdirectory at index %zu failed checks...", node._offset, index);
        else
            node._subdirectoryOffsets.push_back(child);
    }
    if (!readsTree())
        return;
    if (!isEnded)
        noteChildLeftOut(node, fileCount, cursor);
    loadChildren(node, depth);
}

/// What follows a node's last child may have been left there when the node was larger, or be a
/// child that is lost since the count is too small: which, shows when the tree was read. The first
/// tells.
void ZPGorvaneDirectory::Reader::noteChildLeftOut(const ZPGorvaneDirectory &node,
                                                  std::uint32_t fileCount, ZPDataCursor &cursor) {
    if (cursor.offset() == kFileCountPlace)
        return;
    const std::uint32_t child = cursor.readLittleInt32();
    if (child == 0 || child == kUnusedChild)
        return;
    const std::lock_guard guard(_childrenLeftOutLock);
    _childrenLeftOut.push_back({node._offset, fileCount, child});
}

void ZPGorvaneDirectory::Reader::reportChildrenLeftOut() {
    std::ranges::sort(_childrenLeftOut);
    for (const auto &[node, fileCount, child] : _childrenLeftOut)
        if (!isRead(child) && isProbablyNode(child))
            ZPLog("dir %08x> count: %u, but subdirectory %08x follows behind the last one, and "
                  "nothing else leads there; it is left out",
                  node, fileCount, child);
}

/// Whether a node could be read there that has nothing wrong.
bool ZPGorvaneDirectory::Reader::isProbablyNode(std::uint32_t offset) const {
    Reader reader(_dataFile, Mode::probing);
    const Result result = reader.readNode(offset, 1);
    return result.node != nullptr && !reader.hasFaults() && !result.exception &&
           !result.node->files().empty();
}

/// Replaces the offsets of a node's children by the children.
void ZPGorvaneDirectory::Reader::loadChildren(ZPGorvaneDirectory &node, unsigned depth) {
    /// The root and the nodes below it have enough below them to be worth sharing out.
    constexpr unsigned kParallelDepth = 2;
    const auto offsets = std::exchange(node._subdirectoryOffsets, {});
    auto &children = node._subdirectories;
    children.resize(offsets.size());
    const auto load = [&](std::size_t index) {
        children[index] = loadChild(node, offsets[index], depth);
    };
    if (_mode == Mode::parallel && depth <= kParallelDepth)
        ZPParallelFor(offsets.size(), load);
    else
        for (std::size_t index = 0; index < offsets.size(); ++index)
            load(index);
    std::erase(children, nullptr);
}

/// Null, reported, where the child is not followed or cannot be read.
std::unique_ptr<ZPGorvaneDirectory>
ZPGorvaneDirectory::Reader::loadChild(const ZPGorvaneDirectory &node, std::uint32_t offset,
                                      unsigned depth) {
    if (!markAsRead(offset)) {
        report("dir %08x> Subdirectory %08x was read already and is not followed again",
               node._offset, offset);
        return nullptr;
    }
    if (depth >= kMostLevels) {
        report("dir %08x> Subdirectory %08x lies deeper than %u levels and is not followed",
               node._offset, offset, kMostLevels);
        return nullptr;
    }
    if (const std::size_t count = _nodeCount++; count >= _maximumNodes) {
        if (count == _maximumNodes)
            report("dir %08x> Subdirectory %08x and all after it are not followed, there is no "
                   "room for more than %zu directories",
                   node._offset, offset, _maximumNodes);
        return nullptr;
    }
    Result result = readNode(offset, depth + 1);
    if (result.exception)
        report("dir %08x> Caught exception: %s", offset, result.exception->what());
    return std::move(result.node);
}

void ZPGorvaneDirectory::Reader::readFiles(ZPGorvaneDirectory &node, ZPDataCursor &cursor) {
    cursor.setOffset(kFileCountPlace);
    const std::uint32_t fileCount = cursor.readLittleInt32();
    const bool isInnerNode = !node.isRootDirectory() && !node.isLeaf();
    if (isInnerNode && (fileCount < kLeastFiles || fileCount > kMostFiles)) {
        report("Error: Directory %08x has an invalid number of files (%u), must be 30 <= count <= "
               "61",
               node._offset, fileCount);
        report("files: %s", "()");
    } else if (fileCount > kMostFiles) {
        report("Error: Directory %08x has an invalid number of files (%u), must be count <= 61",
               node._offset, fileCount);
    }

    const ZPGorvaneArchiveFamily &family = _dataFile.family();
    node._files.reserve(std::min<std::size_t>(fileCount, kEntriesPerNode));
    for (std::uint32_t index = 0; index < fileCount; ++index) {
        ZPGorvaneFileEntry entry;
        if (!family.readFileEntry(cursor, entry)) {
            report("dir %08x> Failed to create file entry %u", node._offset, index);
            break;
        }
        node._files.push_back(entry);
    }
    if (!node.isLeaf() && node._subdirectories.size() != std::size_t{fileCount} + 1)
        report("dir %08x> count: %u, subdirs: %zu, files: %zu", node._offset, fileCount,
               node._subdirectories.size(), node._files.size());
}

void ZPGorvaneDirectory::Reader::checkOrder(const ZPGorvaneDirectory &node) {
    std::uint32_t previous = 0;
    for (const ZPGorvaneFileEntry &entry : node._files) {
        if (entry.identifier <= previous)
            report("dir %08x> files out of order, prev id (%08x) >= cur id (%08x)", node._offset,
                   previous, entry.identifier);
        previous = entry.identifier;
    }
}

std::optional<ZPGorvaneFileEntry> ZPGorvaneDirectory::searchForFileWithIdentifier(
    std::uint32_t identifier, const ZPGorvaneDataFile &inDataFile, std::uint32_t directoryOffset,
    std::uint32_t *unreadableNode) {
    for (unsigned depth = 1; depth <= kMostLevels; ++depth) {
        const auto node = initWithDataFile(inDataFile, directoryOffset, false);
        if (node == nullptr) {
            if (unreadableNode != nullptr)
                *unreadableNode = directoryOffset;
            return std::nullopt;
        }
        const auto &files = node->files();
        const auto next = std::ranges::find_if(
            files, [=](const auto &entry) { return entry.identifier >= identifier; });
        if (next != files.end() && next->identifier == identifier)
            return *next;
        const auto childIndex = static_cast<std::size_t>(next - files.begin());
        if (childIndex >= node->subdirectoryOffsets().size())
            return std::nullopt;
        directoryOffset = node->subdirectoryOffsets()[childIndex];
    }
    return std::nullopt;
}

void ZPGorvaneDirectory::enumerateDirectoriesUsingBlock(
    const std::function<void(const ZPGorvaneDirectory &)> &block) const {
    block(*this);
    for (const auto &child : _subdirectories)
        child->enumerateDirectoriesUsingBlock(block);
}

std::size_t ZPGorvaneDirectory::entryCount() const {
    std::size_t count = _files.size();
    for (const auto &child : _subdirectories)
        count += child->entryCount();
    return count;
}

void ZPGorvaneDirectory::copyEntriesFromLeftToRight(std::span<ZPGorvaneFileEntry> into) const {
    // The children's parts are laid out first: each child, and the entry to its right, if any.
    std::vector<std::span<ZPGorvaneFileEntry>> parts;
    for (std::size_t index = 0; index < std::max(_files.size(), _subdirectories.size()); ++index) {
        if (index < _subdirectories.size()) {
            const std::size_t count = _subdirectories[index]->entryCount();
            parts.push_back(into.first(count));
            into = into.subspan(count);
        }
        if (index < _files.size()) {
            into.front() = _files[index];
            into = into.subspan(1);
        }
    }
    const auto copyChild = [&](std::size_t index) {
        _subdirectories[index]->copyEntriesFromLeftToRight(parts[index]);
    };
    if (!parts.empty())
        ZPParallelFor(parts.size(), copyChild);
}

std::string ZPGorvaneDirectory::description() const {
    return ZPFormat("<%s: %p> (root? %u, subdirs: %zu, files: %zu)", _family.directoryClassName,
                    static_cast<const void *>(this), isRootDirectory() ? 1u : 0u,
                    _subdirectories.size(), _files.size());
}
