#include "archive/ZPGorvaneDirectory.h"

#include "archive/ZPGorvaneDirectoryReader.h"
#include "io/ZPParallel.h"
#include "io/ZPSystemLog.h"

#include <utility>

using namespace ZPGorvaneLayout;

std::unique_ptr<ZPGorvaneDirectory>
ZPGorvaneDirectory::initWithDataFile(const ZPGorvaneDataFile &dataFile, std::uint32_t offset,
                                     bool loadSubdirectories) {
    if (dataFile.blockStorage() == nullptr)
        return nullptr;
    auto [directory, exception] = loadSubdirectories
                                      ? ZPGorvaneDirectoryReader::readTree(dataFile, offset).root
                                      : ZPGorvaneDirectoryReader::readOneNode(dataFile, offset);
    if (exception)
        throw *exception;
    return std::move(directory);
}

std::optional<ZPGorvaneFileEntry> ZPGorvaneDirectory::searchForFileWithIdentifier(
    std::uint32_t identifier, const ZPGorvaneDataFile &inDataFile, std::uint32_t directoryOffset) {
    for (unsigned depth = 1; depth <= kMostLevels; ++depth) {
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
