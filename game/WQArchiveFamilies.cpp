#include "game/WQArchiveFamilies.h"

#include "game/WQVersion.h"
#include "io/ZPExtensions.h"

namespace {

//     0    u32   version, 0 in an empty slot
//     4    u32   identifier
//     8    u32   fileOffset
//     12   u32   fileSize
//     16   u32   mtime, seconds since 1970
//     20   u32   unknown3
bool readFileEntry(ZPDataCursor &cursor, ZPGorvaneFileEntry &entry) {
    entry.version = cursor.readLittleInt32();
    entry.identifier = cursor.readLittleInt32();
    entry.fileOffset = cursor.readLittleInt32();
    entry.fileSize = cursor.readLittleInt32();
    entry.mtime = cursor.readLittleInt32();
    entry.unknown3 = cursor.readLittleInt32();
    return entry.version != 0;
}

//     0    u32   identifier
//     4    u32   fileOffset
//     8    u32   fileSize
bool readRetailFileEntry(ZPDataCursor &cursor, ZPGorvaneFileEntry &entry) {
    entry.identifier = cursor.readLittleInt32();
    entry.fileOffset = cursor.readLittleInt32();
    entry.fileSize = cursor.readLittleInt32();
    return true;
}

//     0    a retail entry
//     12   u32   mtime, seconds since 1970
bool readSecondGameFileEntry(ZPDataCursor &cursor, ZPGorvaneFileEntry &entry) {
    readRetailFileEntry(cursor, entry);
    entry.mtime = cursor.readLittleInt32();
    return true;
}

/// Keeps the cause of a failed opening to itself.
std::unique_ptr<ZPGorvaneBlockStorage> retailStorageAtPath(const std::filesystem::path &path,
                                                           ZPError *) {
    return ZPGorvaneBlockStorage::initV1StorageWithFileAtPath(path);
}

template <class Version>
std::unique_ptr<ZPGorvaneVersion> newVersion(std::span<const std::byte> data,
                                             ZPGorvaneClientData *clientData) {
    ZPDataCursor cursor(data);
    auto version = std::make_unique<Version>(cursor, clientData);
    if (!cursor.isAtEnd())
        ZPWarnOfBytesLeft(*version, cursor);
    return version;
}

} // namespace

constexpr ZPGorvaneArchiveFamily kWQArchiveFamily = {
    .directoryClassName = "WQDirectory",
    .fileEntryClassName = "WQFileEntry",
    .blockStorageAtPath = &ZPGorvaneBlockStorage::initV3StorageWithFileAtPath,
    .fileEntrySize = 24,
    .readFileEntry = &readFileEntry,
    .newVersion = &newVersion<WQVersion>};
static_assert(kWQArchiveFamily.directorySize() == 1740);

constexpr ZPGorvaneArchiveFamily kWQRetailArchiveFamily = {
    .directoryClassName = "WQRetailDirectory",
    .fileEntryClassName = "WQRetailFileEntry",
    .blockStorageAtPath = &retailStorageAtPath,
    .fileEntrySize = 12,
    .readFileEntry = &readRetailFileEntry,
    .newVersion = &newVersion<ZPGorvaneVersion>};
static_assert(kWQRetailArchiveFamily.directorySize() == 996);

constexpr ZPGorvaneArchiveFamily kWQ2ArchiveFamily = {
    .directoryClassName = "WQ2Directory",
    .fileEntryClassName = "WQ2FileEntry",
    .blockStorageAtPath = &ZPGorvaneBlockStorage::initV2StorageWithFileAtPath,
    .fileEntrySize = 16,
    .readFileEntry = &readSecondGameFileEntry,
    .newVersion = &newVersion<ZPGorvaneVersion>};
static_assert(kWQ2ArchiveFamily.directorySize() == 1244);

void WQWriteFileEntryToBuffer(const ZPGorvaneFileEntry &entry, ZPData &buffer) {
    for (const std::uint32_t word : {entry.version, entry.identifier, entry.fileOffset,
                                     entry.fileSize, entry.mtime, entry.unknown3})
        ZPAppendLittleInt32(buffer, word);
}
