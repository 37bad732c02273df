#include "game/WQDataFile.h"

#include "game/WQArchiveFamilies.h"
#include "game/WQIdentifier.h"

WQDataFile::WQDataFile(const std::filesystem::path &path)
    : ZPGorvaneDataFile(kWQArchiveFamily, path) {}

WQDataFile::WQDataFile(std::unique_ptr<ZPGorvaneBlockStorage> blockStorage)
    : ZPGorvaneDataFile(kWQArchiveFamily, std::move(blockStorage)) {}

std::span<const ZPGorvaneFileEntry> WQDataFile::fileEntriesByLandBlock(std::uint16_t number) const {
    if (_type != cell || number == kWQArchiveRecordsNumber)
        return {};
    return entriesInOrder().entriesWithPrefix(number, kWQCellBits);
}
