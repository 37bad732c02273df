#include "game/WQDataFile.h"

#include "game/WQArchiveFamilies.h"

WQDataFile::WQDataFile(const std::filesystem::path &path)
    : ZPGorvaneDataFile(WQArchiveFamily, path) {}

WQDataFile::WQDataFile(std::unique_ptr<ZPGorvaneBlockStorage> blockStorage)
    : ZPGorvaneDataFile(WQArchiveFamily, std::move(blockStorage)) {}

std::span<const ZPGorvaneFileEntry> WQDataFile::fileEntriesByLandBlock(std::uint16_t number) const {
    constexpr std::uint16_t kArchiveRecords = 0xFFFF;
    if (_type != cell || number == kArchiveRecords)
        return {};
    return entriesInOrder().entriesWithPrefix(number, 16);
}
