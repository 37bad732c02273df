#include "sample/SampleDirectory.h"

#include "io/ZPMutableDataCursor.h"

#include <algorithm>
#include <vector>

namespace {

constexpr std::size_t kChildSlots = 62;
constexpr std::size_t kEntrySlots = 62;
constexpr std::size_t kMostEntries = 61;
constexpr std::size_t kLeastEntries = 30;
constexpr std::size_t kUsualEntries = 46;

/// Entries of a subtree whose every node holds `perNode`; a height of 0 is a leaf.
std::size_t subtreeSize(int height, std::size_t perNode) {
    std::size_t size = perNode;
    for (int i = 0; i < height; ++i)
        size = perNode + (perNode + 1) * size;
    return size;
}

} // namespace

std::uint32_t SampleDirectoryBuilder::build() {
    int height = 0;
    while (_entries.size() > subtreeSize(height, kMostEntries))
        ++height;
    return buildSubtree(_entries, height, true);
}

std::uint32_t SampleDirectoryBuilder::buildSubtree(std::span<const SampleFileEntry> entries,
                                                   int height, bool isRoot) {
    if (height == 0)
        return write({}, entries);

    // A node with c children keeps c - 1 entries for itself.
    const std::size_t least = subtreeSize(height - 1, kLeastEntries);
    const std::size_t most = subtreeSize(height - 1, kMostEntries);
    const std::size_t usual = subtreeSize(height - 1, kUsualEntries);
    const std::size_t total = entries.size() + 1;
    const std::size_t fewest =
        std::max((total + most) / (most + 1), isRoot ? std::size_t{2} : kLeastEntries + 1);
    const std::size_t greatest = std::min(total / (least + 1), kChildSlots);
    const std::size_t count = std::clamp((total + usual / 2) / (usual + 1), fewest, greatest);

    std::vector<std::uint32_t> children;
    std::vector<SampleFileEntry> own;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t after = count - i - 1;
        const std::size_t left = entries.size() - after;
        const std::size_t low = std::max(least, left - std::min(left, after * most));
        const std::size_t high = std::min(most, left - after * least);
        const double mean = static_cast<double>(left) / static_cast<double>(after + 1);
        const std::size_t size =
            std::clamp(static_cast<std::size_t>(mean * _random.range(0.8, 1.2)), low, high);
        children.push_back(buildSubtree(entries.first(size), height - 1, false));
        if (after > 0) {
            own.push_back(entries[size]);
            entries = entries.subspan(size + 1);
        }
    }
    return write(children, own);
}

std::uint32_t SampleDirectoryBuilder::write(std::span<const std::uint32_t> children,
                                            std::span<const SampleFileEntry> entries) {
    ZPMutableDataCursor node;
    for (std::size_t i = 0; i < kChildSlots; ++i)
        node.writeLittleInt32(i < children.size() ? children[i] : 0);
    node.writeLittleInt32(static_cast<std::uint32_t>(entries.size()));
    for (const SampleFileEntry &entry : entries)
        for (const std::uint32_t word : {entry.version, entry.identifier, entry.fileOffset,
                                         entry.fileSize, entry.mtime, entry.iteration})
            node.writeLittleInt32(word);
    // What lies behind the last entry was never cleared.
    for (std::size_t i = entries.size() * 6; i < kEntrySlots * 6; ++i)
        node.writeLittleInt32(0xCDCDCDCD);
    return _writeNode(node.data());
}
