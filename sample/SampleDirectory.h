#pragma once

#include "sample/SampleRandom.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>

/// One file in an archive's directory.
struct SampleFileEntry {
    std::uint32_t version = 1; // 0 would mark an empty slot
    std::uint32_t identifier = 0;
    std::uint32_t fileOffset = 0;
    std::uint32_t fileSize = 0;
    std::uint32_t mtime = 0; // seconds since 1970
    std::uint32_t iteration = 0;
};

/// Lays sorted entries out as a tree of nodes, filled unevenly, as insertion over years does it.
/// Every node holds at most 61 entries, all but the root at least 30, and an inner node one child
/// more than entries:
///
///     0     62 x u32  offsets of the children, then zeros
///     248   u32       number of entries
///     252   62 x      version, identifier, offset, size, mtime, iteration (u32 each)
class SampleDirectoryBuilder {
  public:
    /// Stores a node's bytes and tells where.
    using NodeWriter = std::function<std::uint32_t(std::span<const std::byte>)>;

    SampleDirectoryBuilder(std::span<const SampleFileEntry> entries, SampleRandom &random,
                           NodeWriter writeNode)
        : _entries(entries), _random(random), _writeNode(std::move(writeNode)) {}

    /// Offset of the root.
    std::uint32_t build();

  private:
    std::uint32_t buildSubtree(std::span<const SampleFileEntry> entries, int height, bool isRoot);
    std::uint32_t write(std::span<const std::uint32_t> children,
                        std::span<const SampleFileEntry> entries);

    std::span<const SampleFileEntry> _entries;
    SampleRandom &_random;
    NodeWriter _writeNode;
};
