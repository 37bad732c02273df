#include "archive/ZPGorvaneDirectory.h"

#include "archive/ZPGorvaneDataFile.h"
#include "io/ZPSystemLog.h"

#include <unordered_set>

namespace {

constexpr std::size_t kMaximumChildren = 62;
constexpr std::uint32_t kFileCountOffset = 248;
constexpr std::uint32_t kMaximumFiles = 61;
constexpr std::uint32_t kMinimumFiles = 30;
constexpr std::uint32_t kUnusedChild = 0xCDCDCDCD;
/// 2^32 files make a tree of seven levels even when its nodes are half empty.
constexpr unsigned kMaximumDepth = 32;

} // namespace

/// Reads nodes of one archive, remembering which it has read.
class ZPGorvaneDirectory::Reader {
  public:
    Reader(const ZPGorvaneDataFile &dataFile, bool loadSubdirectories)
        : _dataFile(dataFile), _storage(*dataFile.blockStorage()),
          _loadSubdirectories(loadSubdirectories) {}

    std::unique_ptr<ZPGorvaneDirectory> readNode(std::uint32_t offset, unsigned depth);

  private:
    void readChildren(ZPGorvaneDirectory &node, ZPDataCursor &cursor, unsigned depth);
    void loadChild(ZPGorvaneDirectory &node, std::uint32_t offset, unsigned depth);
    void readFiles(ZPGorvaneDirectory &node, ZPDataCursor &cursor);
    static void checkOrder(const ZPGorvaneDirectory &node);

    const ZPGorvaneDataFile &_dataFile;
    const ZPGorvaneBlockStorage &_storage;
    bool _loadSubdirectories;
    std::unordered_set<std::uint32_t> _nodesRead;
};

std::unique_ptr<ZPGorvaneDirectory>
ZPGorvaneDirectory::initWithDataFile(const ZPGorvaneDataFile &dataFile, std::uint32_t offset,
                                     bool loadSubdirectories) {
    if (dataFile.blockStorage() == nullptr)
        return nullptr;
    return Reader(dataFile, loadSubdirectories).readNode(offset, 1);
}

std::unique_ptr<ZPGorvaneDirectory> ZPGorvaneDirectory::Reader::readNode(std::uint32_t offset,
                                                                         unsigned depth) {
    // A node's bytes are used up before its children are read only as far as the list of them, so
    // each level keeps its own.
    ZPData scratch;
    ZPError error;
    const auto size = static_cast<std::uint32_t>(_dataFile.family().directorySize());
    const auto bytes = _storage.readBytesFromBlocksAtOffset(offset, size, scratch, &error);
    if (!bytes) {
        ZPLog("Error: %s", error.description().c_str());
        return nullptr;
    }
    _nodesRead.insert(offset);

    auto node = std::make_unique<ZPGorvaneDirectory>();
    node->_offset = offset;
    ZPDataCursor cursor(*bytes);
    readChildren(*node, cursor, depth);
    readFiles(*node, cursor);
    checkOrder(*node);
    return node;
}

void ZPGorvaneDirectory::Reader::readChildren(ZPGorvaneDirectory &node, ZPDataCursor &cursor,
                                              unsigned depth) {
    cursor.setOffset(kFileCountOffset);
    const std::uint64_t fileCount = cursor.readLittleInt32();
    cursor.setOffset(0);
    for (std::size_t index = 0; index < kMaximumChildren && index <= fileCount; ++index) {
        const std::uint32_t child = cursor.readLittleInt32();
        if (child == 0 || child == kUnusedChild)
            return;
        if (child % _storage.blockSize() != 0)
            ZPLog("dir %08x> Subdirectory at index %zu failed checks...", node._offset, index);
        else if (_loadSubdirectories)
            loadChild(node, child, depth);
        else
            node._subdirectoryOffsets.push_back(child);
    }
}

void ZPGorvaneDirectory::Reader::loadChild(ZPGorvaneDirectory &node, std::uint32_t offset,
                                           unsigned depth) {
    if (_nodesRead.contains(offset)) {
        ZPLog("dir %08x> Subdirectory %08x was read already and is not followed again",
              node._offset, offset);
        return;
    }
    if (depth >= kMaximumDepth) {
        ZPLog("dir %08x> Subdirectory %08x lies deeper than %u levels and is not followed",
              node._offset, offset, kMaximumDepth);
        return;
    }
    try {
        if (auto child = readNode(offset, depth + 1))
            node._subdirectories.push_back(std::move(child));
    } catch (const ZPRangeException &exception) {
        ZPLog("dir %08x> Caught exception: %s", offset, exception.what());
    }
}

void ZPGorvaneDirectory::Reader::readFiles(ZPGorvaneDirectory &node, ZPDataCursor &cursor) {
    cursor.setOffset(kFileCountOffset);
    const std::uint32_t fileCount = cursor.readLittleInt32();
    const bool isInnerNode = !node.isRootDirectory() && !node.isLeaf();
    if (isInnerNode && (fileCount < kMinimumFiles || fileCount > kMaximumFiles)) {
        ZPLog("Error: Directory %08x has an invalid number of files (%u), must be 30 <= count <= "
              "61",
              node._offset, fileCount);
        ZPLog("files: %s", "()");
    } else if (fileCount > kMaximumFiles) {
        ZPLog("Error: Directory %08x has an invalid number of files (%u), must be count <= 61",
              node._offset, fileCount);
    }

    const ZPGorvaneArchiveFamily &family = _dataFile.family();
    node._files.reserve(std::min<std::size_t>(fileCount, family.kEntriesPerNode));
    for (std::uint32_t index = 0; index < fileCount; ++index) {
        ZPGorvaneFileEntry entry;
        if (!family.readFileEntry(cursor, entry)) {
            ZPLog("dir %08x> Failed to create file entry %u", node._offset, index);
            break;
        }
        node._files.push_back(entry);
    }
    if (!node.isLeaf() && node._subdirectories.size() != std::size_t{fileCount} + 1)
        ZPLog("dir %08x> count: %u, subdirs: %zu, files: %zu", node._offset, fileCount,
              node._subdirectories.size(), node._files.size());
}

void ZPGorvaneDirectory::Reader::checkOrder(const ZPGorvaneDirectory &node) {
    std::uint32_t previous = 0;
    for (const ZPGorvaneFileEntry &entry : node._files) {
        if (entry.identifier <= previous)
            ZPLog("dir %08x> files out of order, prev id (%08x) >= cur id (%08x)", node._offset,
                  previous, entry.identifier);
        previous = entry.identifier;
    }
}

std::optional<ZPGorvaneFileEntry> ZPGorvaneDirectory::searchForFileWithIdentifier(
    std::uint32_t identifier, const ZPGorvaneDataFile &inDataFile, std::uint32_t directoryOffset) {
    for (unsigned depth = 1; depth <= kMaximumDepth; ++depth) {
        const auto node = initWithDataFile(inDataFile, directoryOffset, false);
        if (node == nullptr)
            return std::nullopt;
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

void ZPGorvaneDirectory::appendEntriesFromLeftToRight(
    std::vector<ZPGorvaneFileEntry> &entries) const {
    if (isLeaf()) {
        entries.insert(entries.end(), _files.begin(), _files.end());
        return;
    }
    for (std::size_t index = 0; index < std::max(_files.size(), _subdirectories.size()); ++index) {
        if (index < _subdirectories.size())
            _subdirectories[index]->appendEntriesFromLeftToRight(entries);
        if (index < _files.size())
            entries.push_back(_files[index]);
    }
}

std::string ZPGorvaneDirectory::description() const {
    return ZPFormat("<ZPGorvaneDirectory: %p> (root? %u, subdirs: %zu, files: %zu)",
                    static_cast<const void *>(this), isRootDirectory() ? 1u : 0u,
                    _subdirectories.size(), _files.size());
}
