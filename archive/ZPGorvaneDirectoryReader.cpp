#include "archive/ZPGorvaneDirectoryReader.h"

#include "archive/ZPFastWay.h"
#include "io/ZPParallel.h"
#include "io/ZPSystemLog.h"

#include <cstdarg>
#include <tuple>
#include <utility>

using namespace ZPGorvaneLayout;

namespace {

constexpr std::uint32_t kLeastFiles = 30;

} // namespace

ZPGorvaneDirectoryReader::ZPGorvaneDirectoryReader(const ZPGorvaneDataFile &dataFile, Mode mode)
    : _dataFile(dataFile), _storage(*dataFile.blockStorage()), _mode(mode),
      _nodesRead(readsTree() ? _storage.reachableBlockCount() / kBitsPerWord + 1 : 0),
      _maximumNodes(_storage.blockCount() * _storage.blockSize() /
                    dataFile.family().directorySize()) {}

ZPGorvaneDirectoryReader::Node
ZPGorvaneDirectoryReader::readOneNode(const ZPGorvaneDataFile &dataFile, std::uint32_t offset) {
    return ZPGorvaneDirectoryReader(dataFile, Mode::oneNode).readNode(offset, 0, 1);
}

ZPGorvaneDirectoryReader::Tree ZPGorvaneDirectoryReader::readTree(const ZPGorvaneDataFile &dataFile,
                                                                  std::uint32_t offset) {
    const std::uint64_t place = rootPlace(dataFile.blockStorage()->version());
    if (ZPIsOpen(ZPFastWay::index)) {
        ZPGorvaneDirectoryReader parallel(dataFile, Mode::parallel);
        Node root = parallel.readNode(offset, place, 1);
        if (!parallel._hasFaults && parallel.childrenLeftOut().empty())
            return {std::move(root), {}};
    }
    ZPGorvaneDirectoryReader reporting(dataFile, Mode::reporting);
    Tree tree{reporting.readNode(offset, place, 1), {}};
    reporting.reportChildrenLeftOut();
    constexpr Bounds kAll = {-1, std::int64_t{1} << 32};
    if (tree.root.directory != nullptr)
        reporting.addLosses(*tree.root.directory, kAll, tree.lost);
    else
        tree.lost.addBetween(kAll.above, kAll.below);
    tree.lost.tidy();
    return tree;
}

// -- reports

/// Logs what is wrong, each time, and collects it, once: when the tree is read, where each place is
/// known.
void ZPGorvaneDirectoryReader::report(std::uint64_t place, const std::string &cause,
                                      const std::string &line) {
    _hasFaults = true;
    if (isSilent())
        return;
    if (_mode == Mode::reporting)
        _dataFile.collect({ZPGorvaneFinding::Severity::error, kZPGorvaneDirectoryFinding,
                           std::nullopt, place, cause});
    ZPLog("%s", line.c_str());
}

void ZPGorvaneDirectoryReader::reportOfNode(std::uint32_t node, std::uint64_t place,
                                            const char *format, ...) {
    _hasFaults = true;
    if (isSilent())
        return;
    va_list arguments;
    va_start(arguments, format);
    const std::string line = ZPFormat("dir %08x> ", node) + ZPFormatArguments(format, arguments);
    va_end(arguments);
    report(place, line, line);
}

// -- nodes

/// False where the node was read before.
bool ZPGorvaneDirectoryReader::markAsRead(std::uint32_t offset) {
    const std::size_t block = offset / _storage.blockSize();
    if (block / kBitsPerWord >= _nodesRead.size())
        return true; // outside the file; its chain will say so
    const std::uint64_t bit = std::uint64_t{1} << block % kBitsPerWord;
    return (_nodesRead[block / kBitsPerWord].fetch_or(bit) & bit) == 0;
}

bool ZPGorvaneDirectoryReader::isRead(std::uint32_t offset) const {
    const std::size_t block = offset / _storage.blockSize();
    return block / kBitsPerWord < _nodesRead.size() &&
           (_nodesRead[block / kBitsPerWord] >> block % kBitsPerWord & 1) != 0;
}

ZPGorvaneDirectoryReader::Node
ZPGorvaneDirectoryReader::readNode(std::uint32_t offset, std::uint64_t place, unsigned depth) {
    ZPData scratch;
    const auto bytes = readBytes(offset, place, scratch);
    if (!bytes)
        return {};
    std::ignore = markAsRead(offset);

    Node result{std::make_unique<ZPGorvaneDirectory>(_dataFile.family()), std::nullopt};
    ZPGorvaneDirectory &node = *result.directory;
    node._offset = offset;
    ZPDataCursor cursor(*bytes);
    try {
        readChildren(node, cursor, depth);
        readFiles(node, cursor);
    } catch (const ZPRangeException &exception) {
        result.exception = exception;
        _hasFaults = true;
        if (Loss *loss = lossOf(node))
            loss->lacksEntries = true;
    }
    checkOrder(node);
    return result;
}

/// None, reported, where the chain cannot be read.
std::optional<std::span<const std::byte>>
ZPGorvaneDirectoryReader::readBytes(std::uint32_t offset, std::uint64_t place, ZPData &scratch) {
    std::span<const std::byte> bytes;
    const auto size = static_cast<std::uint32_t>(_dataFile.family().directorySize());
    const auto error = _storage.findBytesAtOffset(offset, size, scratch, bytes);
    if (!error)
        return bytes;
    if (const std::string line =
            ZPGorvaneBlockStorage::exceptionLine(*error, _dataFile.path().filename());
        !line.empty() && !isSilent())
        ZPLog("%s", line.c_str());
    report(place, ZPFormat("dir %08x> cannot be read: %s", offset, error->failureReason().c_str()),
           "Error: " + error->description());
    return std::nullopt;
}

// -- children

void ZPGorvaneDirectoryReader::readChildren(ZPGorvaneDirectory &node, ZPDataCursor &cursor,
                                            unsigned depth) {
    cursor.setOffset(kFileCountPlace);
    const std::uint32_t fileCount = cursor.readLittleInt32();
    cursor.setOffset(0);
    Loss *const loss = lossOf(node);
    bool isEnded = false;
    std::size_t index = 0;
    for (; index < kMostChildren && index <= fileCount; ++index) {
        const std::uint32_t child = cursor.readLittleInt32();
        isEnded = child == 0 || child == kUnusedChild;
        if (isEnded)
            break;
        if (child % _storage.blockSize() != 0) {
            reportOfNode(node._offset, placeOfLink(_storage, node._offset, index),
                         "Subdirectory at index %zu failed checks...", index);
            if (loss != nullptr)
                loss->children.push_back(index);
        } else if (_mode != Mode::reporting) {
            node._subdirectoryOffsets.push_back(child);
        } else if (auto directory = loadChild(node, child, index, depth)) {
            node._subdirectories.push_back(std::move(directory));
        } else {
            loss->children.push_back(index);
        }
    }
    if (loss != nullptr)
        loss->childCount = index;
    if (readsTree() && !isEnded)
        noteChildAfterLast(node, fileCount, cursor);
    if (_mode == Mode::parallel)
        loadChildren(node, depth);
}

/// Replaces the offsets of a node's children by the children.
void ZPGorvaneDirectoryReader::loadChildren(ZPGorvaneDirectory &node, unsigned depth) {
    /// The root and the nodes below it have enough below them to be worth sharing out.
    constexpr unsigned kParallelDepth = 2;
    const auto offsets = std::exchange(node._subdirectoryOffsets, {});
    auto &children = node._subdirectories;
    children.resize(offsets.size());
    const auto load = [&](std::size_t index) {
        children[index] = loadChild(node, offsets[index], index, depth);
    };
    if (depth <= kParallelDepth)
        ZPParallelFor(offsets.size(), load);
    else
        for (std::size_t index = 0; index < offsets.size(); ++index)
            load(index);
    std::erase(children, nullptr);
}

/// Null, reported, where the child is not followed or cannot be read.
std::unique_ptr<ZPGorvaneDirectory>
ZPGorvaneDirectoryReader::loadChild(const ZPGorvaneDirectory &node, std::uint32_t offset,
                                    std::size_t index, unsigned depth) {
    const std::uint64_t place = placeOfLink(_storage, node._offset, index);
    if (!markAsRead(offset)) {
        reportOfNode(node._offset, place,
                     "Subdirectory %08x was read already and is not followed again%s", offset,
                     _dataFile.nameInParentheses().c_str());
        return nullptr;
    }
    if (depth >= kMostLevels) {
        reportOfNode(node._offset, place,
                     "Subdirectory %08x lies deeper than %u levels and is not followed%s", offset,
                     kMostLevels, _dataFile.nameInParentheses().c_str());
        return nullptr;
    }
    if (const std::size_t count = _nodeCount++; count >= _maximumNodes) {
        if (count == _maximumNodes)
            reportOfNode(node._offset, place,
                         "Subdirectory %08x and all after it are not followed, there is no room "
                         "for more than %zu directories%s",
                         offset, _maximumNodes, _dataFile.nameInParentheses().c_str());
        return nullptr;
    }
    Node result = readNode(offset, place, depth + 1);
    if (result.exception)
        reportOfNode(offset, offset, "Caught exception: %s%s", result.exception->what(),
                     _dataFile.nameInParentheses().c_str());
    return std::move(result.directory);
}

/// What follows a node's last child may have been left there when the node was larger, or be a
/// child that is lost since the count is too small: which, shows when the tree was read. The first
/// tells.
void ZPGorvaneDirectoryReader::noteChildAfterLast(const ZPGorvaneDirectory &node,
                                                  std::uint32_t fileCount, ZPDataCursor &cursor) {
    if (cursor.offset() == kFileCountPlace)
        return;
    const std::uint32_t child = cursor.readLittleInt32();
    if (child == 0 || child == kUnusedChild)
        return;
    const std::lock_guard guard(_childrenAfterLastLock);
    _childrenAfterLast.push_back({node._offset, fileCount, child, &node});
}

/// Those that nothing else leads to, by the node; after the tree was read.
std::vector<ZPGorvaneDirectoryReader::ChildLeftOut>
ZPGorvaneDirectoryReader::childrenLeftOut() const {
    auto children = _childrenAfterLast;
    std::erase_if(children, [this](const ChildLeftOut &left) {
        return isRead(left.child) || !isProbablyNode(left.child);
    });
    std::ranges::sort(children, {}, &ChildLeftOut::node);
    return children;
}

void ZPGorvaneDirectoryReader::reportChildrenLeftOut() {
    for (const auto &[node, fileCount, child, directory] : childrenLeftOut()) {
        reportOfNode(node, child,
                     "count: %u, but subdirectory %08x follows behind the last one, and nothing "
                     "else leads there; it is left out%s",
                     fileCount, child, _dataFile.nameInParentheses().c_str());
        lossOf(*directory)->lacksEntries = true;
    }
}

/// Whether a node could be read there that has nothing wrong.
bool ZPGorvaneDirectoryReader::isProbablyNode(std::uint32_t offset) const {
    ZPGorvaneDirectoryReader reader(_dataFile, Mode::probing);
    const Node result = reader.readNode(offset, 0, 1);
    return result.directory != nullptr && !reader._hasFaults && !result.directory->files().empty();
}

// -- entries

void ZPGorvaneDirectoryReader::readFiles(ZPGorvaneDirectory &node, ZPDataCursor &cursor) {
    cursor.setOffset(kFileCountPlace);
    const std::uint32_t fileCount = cursor.readLittleInt32();
    const bool isInnerNode = !node.isRootDirectory() && !node.isLeaf();
    const auto reportCount = [&](const std::string &cause) {
        report(node._offset, cause, "Error: " + cause);
    };
    if (isInnerNode && (fileCount < kLeastFiles || fileCount > kMostFiles)) {
        reportCount(ZPFormat("Directory %08x has an invalid number of files (%u), must be 30 <= "
                             "count <= 61",
                             node._offset, fileCount));
        report(node._offset, "files: ()", "files: ()");
    } else if (fileCount > kMostFiles) {
        reportCount(ZPFormat("Directory %08x has an invalid number of files (%u), must be count "
                             "<= 61",
                             node._offset, fileCount));
    }

    const ZPGorvaneArchiveFamily &family = _dataFile.family();
    node._files.reserve(std::min<std::size_t>(fileCount, kEntriesPerNode));
    Loss *const loss = lossOf(node);
    for (std::uint32_t index = 0; index < fileCount; ++index) {
        ZPGorvaneFileEntry entry;
        if (!family.readFileEntry(cursor, entry)) {
            reportOfNode(node._offset, node._offset, "Failed to create file entry %u", index);
            if (loss != nullptr)
                loss->lacksEntries = true;
            break;
        }
        node._files.push_back(entry);
    }
    if (!node.isLeaf() && node._subdirectories.size() != std::size_t{fileCount} + 1) {
        // Where children were lost, that is what is wrong, and was collected.
        const std::uint64_t place =
            loss != nullptr && !loss->children.empty()
                ? placeOfLink(_storage, node._offset, loss->children.front())
                : node._offset;
        reportOfNode(node._offset, place, "count: %u, subdirs: %zu, files: %zu", fileCount,
                     node._subdirectories.size(), node._files.size());
        if (loss != nullptr)
            loss->lacksChildren = loss->childCount <= fileCount;
    }
}

void ZPGorvaneDirectoryReader::checkOrder(const ZPGorvaneDirectory &node) {
    std::uint32_t previous = 0;
    for (const ZPGorvaneFileEntry &entry : node._files) {
        if (entry.identifier <= previous) {
            reportOfNode(node._offset, node._offset,
                         "files out of order, prev id (%08x) >= cur id (%08x)", previous,
                         entry.identifier);
            if (Loss *loss = lossOf(node))
                loss->isOutOfOrder = true;
        }
        previous = entry.identifier;
    }
}

// -- losses

/// What the node's own identifiers and the bounds of those above leave for what could not be read.
void ZPGorvaneDirectoryReader::addLosses(const ZPGorvaneDirectory &node, Bounds bounds,
                                         ZPGorvaneLostIdentifiers &into) const {
    const auto found = _losses.find(&node);
    const Loss &loss = found != _losses.end() ? found->second : Loss();
    // Where one of a node's identifiers is wrong, another is missing, and bounds nothing.
    if (loss.isOutOfOrder)
        return into.addBetween(bounds.above, bounds.below);
    const auto &files = node.files();
    const auto aboveChild = [&](std::size_t index) {
        return index == 0 || files.empty()
                   ? bounds.above
                   : std::int64_t{files[std::min(index, files.size()) - 1].identifier};
    };
    const auto belowChild = [&](std::size_t index) {
        return index < files.size() ? std::int64_t{files[index].identifier} : bounds.below;
    };
    auto lost = loss.children.begin();
    auto child = node.subdirectories().begin();
    for (std::size_t index = 0; index < loss.childCount; ++index) {
        const Bounds ofChild = {aboveChild(index), belowChild(index)};
        if (lost != loss.children.end() && *lost == index) {
            into.addBetween(ofChild.above, ofChild.below);
            ++lost;
        } else if (child != node.subdirectories().end()) {
            addLosses(**child++, ofChild, into);
        }
    }
    if (loss.lacksChildren)
        into.addBetween(aboveChild(loss.childCount), bounds.below);
    if (loss.lacksEntries)
        into.addBetween(aboveChild(files.size()), bounds.below);
}
