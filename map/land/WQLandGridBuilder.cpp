#include "map/land/WQLandGridBuilder.h"

#include "game/WQLandBlock.h"
#include "io/ZPParallelLog.h"
#include "io/ZPSystemLog.h"

namespace {

/// How many files ahead memory is asked for.
constexpr std::size_t kFilesAhead = 8;
/// A record that is longer than a land block's is read nevertheless, and the rest of it warned of.
/// One that is longer than this is none: a damaged size must not decide how much is read.
constexpr std::uint32_t kGreatestRecordSize = 1 << 16;
constexpr unsigned kPointsPerBlock = kWQCellsPerLandBlock + 1;

/// The world is filled in strips of 16 columns of blocks, side by side. Within a strip blocks come
/// in the order of their identifiers, as the rule for shared points wants it. The east edge of a
/// strip is a column of points that the next strip also writes and has precedence on, so it is kept
/// aside until all strips are done.
class Strip {
  public:
    static constexpr unsigned kCount = 16;
    static constexpr unsigned kIdentifierShift = 28;

    void fill(unsigned number, WQLandGrid &grid, const WQDataFile &cellDataFile,
              const WQDataFileComparison *comparison);
    void fillEastEdge(unsigned number, WQLandGrid &grid) const;

    WQLandCounts counts;

  private:
    void leaveOut(const WQDataFile &cellDataFile, const ZPGorvaneFileEntry &entry,
                  const std::string &cause, bool isOfRecord);
    void fillBlock(const ZPGorvaneFileEntry &entry, const WQLandBlock &block, WQLandGrid &grid,
                   const WQDataFileComparison *comparison);

    std::array<WQLandPoint, kWQLandSize> _eastEdge{};
};

constexpr unsigned kBlocksPerStrip = 256 / Strip::kCount;

std::uint8_t flagsOfBlock(std::uint16_t number, const WQLandBlock &block,
                          const WQDataFileComparison *comparison) {
    unsigned flags = WQLandPoint::hasData;
    if (block.hasObjectBlock())
        flags |= WQLandPoint::hasObjectBlock;
    if (block.isPassable())
        flags |= WQLandPoint::isPassable;
    if (comparison != nullptr) {
        const auto holds = [number](const auto &set) { return set && set->contains(number); };
        if (holds(comparison->landBlocksAdded()))
            flags |= WQLandPoint::wasAdded;
        if (holds(comparison->landBlocksRemoved()))
            flags |= WQLandPoint::wasRemoved;
        if (holds(comparison->landBlocksChanged()))
            flags |= WQLandPoint::wasChanged;
    }
    return static_cast<std::uint8_t>(flags);
}

void Strip::fill(unsigned number, WQLandGrid &grid, const WQDataFile &cellDataFile,
                 const WQDataFileComparison *comparison) {
    ZPData scratch;
    const auto entries =
        cellDataFile.fileEntriesByIdentifier().entriesWithPrefix(number, kIdentifierShift);
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const ZPGorvaneFileEntry &entry = entries[index];
        if (index + kFilesAhead < entries.size() &&
            WQKindOfCellFile(entries[index + kFilesAhead].identifier) == WQCellFileKind::landBlock)
            cellDataFile.prefetchFileEntry(entries[index + kFilesAhead]);
        const WQCellFileKind kind = WQKindOfCellFile(entry.identifier);
        if (kind == WQCellFileKind::objectBlock)
            ++counts.objectBlocks;
        if (kind != WQCellFileKind::landBlock)
            continue;
        ++counts.landBlocks;
        if (entry.fileSize > kGreatestRecordSize) {
            leaveOut(cellDataFile, entry,
                     ZPFormat("it claims %u bytes, where a land block has %u", entry.fileSize,
                              WQLandBlock::kRecordSize),
                     true);
            continue;
        }
        ZPError error;
        const auto bytes = cellDataFile.readBytesForFileEntry(entry, scratch, &error);
        const auto block =
            bytes ? ZPRecordWithData<WQLandBlock>(*bytes, cellDataFile.clientData(), &error)
                  : std::nullopt;
        if (block)
            fillBlock(entry, *block, grid, comparison);
        else
            leaveOut(cellDataFile, entry, error.description(),
                     bytes.has_value()); // else the archive has collected it
    }
}

void Strip::leaveOut(const WQDataFile &cellDataFile, const ZPGorvaneFileEntry &entry,
                     const std::string &cause, bool isOfRecord) {
    ++counts.unreadBlocks;
    if (isOfRecord)
        cellDataFile.collect(kZPGorvaneRecordFinding, entry, cause);
    ZPLog("Land block %08x is left out: %s%s", entry.identifier, cause.c_str(),
          cellDataFile.nameInParentheses().c_str());
}

void Strip::fillBlock(const ZPGorvaneFileEntry &entry, const WQLandBlock &block, WQLandGrid &grid,
                      const WQDataFileComparison *comparison) {
    const std::uint16_t number = WQLandBlockNumberOfIdentifier(entry.identifier);
    const unsigned column = WQColumnOfLandBlock(number), row = WQRowOfLandBlock(number);
    if (column >= kWQLandBlocksPerSide || row >= kWQLandBlocksPerSide) {
        ZPLog("Land block %08x is left out: it lies outside the world", entry.identifier);
        return;
    }
    ++counts.drawnBlocks;
    if (block.identifier() != entry.identifier)
        ZPLog("Land block %08x says of itself that it is %08x; it is drawn as the former",
              entry.identifier, block.identifier());
    const std::uint8_t flags = flagsOfBlock(number, block, comparison);
    const bool isLastOfStrip = column % kBlocksPerStrip == kBlocksPerStrip - 1;
    for (unsigned j = 0; j < kPointsPerBlock; ++j) {
        const unsigned y = row * kWQCellsPerLandBlock + j;
        WQLandPoint *points = &grid.at(column * kWQCellsPerLandBlock, y);
        for (unsigned i = 0; i < kPointsPerBlock; ++i) {
            const std::size_t element = i * kPointsPerBlock + j;
            const WQLandPoint point{block.topology()[element], block.height()[element], flags};
            if (i == kWQCellsPerLandBlock && isLastOfStrip)
                _eastEdge[y] = point;
            else
                points[i] = point;
        }
    }
}

void Strip::fillEastEdge(unsigned number, WQLandGrid &grid) const {
    const unsigned x = (number + 1) * kBlocksPerStrip * kWQCellsPerLandBlock;
    if (x >= kWQLandSize)
        return;
    for (unsigned y = 0; y < kWQLandSize; ++y)
        if (!grid.at(x, y).has(WQLandPoint::hasData))
            grid.at(x, y) = _eastEdge[y];
}

} // namespace

std::string WQLandCounts::unreadText() const {
    return unreadBlocks > 0 ? ZPFormat("%u of %u land blocks could not be read; `plotterra-data "
                                       "check` says why",
                                       unreadBlocks, landBlocks)
                            : std::string();
}

WQLandCounts WQFillLandGrid(WQLandGrid &grid, const WQDataFile &cellDataFile,
                            const WQDataFileComparison *comparison) {
    std::vector<Strip> strips(Strip::kCount);
    ZPParallelForWithLog(Strip::kCount, [&](std::size_t number) {
        strips[number].fill(static_cast<unsigned>(number), grid, cellDataFile, comparison);
    });
    WQLandCounts counts;
    for (unsigned number = 0; number < Strip::kCount; ++number) {
        strips[number].fillEastEdge(number, grid);
        counts.landBlocks += strips[number].counts.landBlocks;
        counts.objectBlocks += strips[number].counts.objectBlocks;
        counts.drawnBlocks += strips[number].counts.drawnBlocks;
        counts.unreadBlocks += strips[number].counts.unreadBlocks;
    }
    return counts;
}
