#include "game/WQArchiveFamilies.h"

#include "game/WQDataFile.h"
#include "game/WQRecordClass.h"
#include "game/WQRetailDataFile.h"
#include "game/WQVersion.h"
#include "io/ZPExtensions.h"

#include <algorithm>

namespace {

using enum ZPGorvaneArchiveRole;

constexpr ZPGorvaneArchiveName kFirstGameArchives[] = {
    {"client_portal.dat", "portal", portal},
    {"client_highres.dat", "highres", highres},
    {"client_cell_1.dat", "cell", cell},
    {"client_local_English.dat", "local", local}};
constexpr ZPGorvaneArchiveName kRetailArchives[] = {{"portal.dat", "portal", portal},
                                                    {"cell.dat", "cell", cell}};

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

std::unique_ptr<ZPGorvaneDataFile> newDataFile(const std::filesystem::path &path,
                                               ZPGorvaneArchiveRole role) {
    auto dataFile = std::make_unique<WQDataFile>(path);
    dataFile->setType(static_cast<std::uint32_t>(role));
    return dataFile;
}

std::unique_ptr<ZPGorvaneDataFile> newRetailDataFile(const std::filesystem::path &path,
                                                     ZPGorvaneArchiveRole) {
    return std::make_unique<WQRetailDataFile>(path);
}

std::unique_ptr<ZPGorvaneDataFile> newSecondGameDataFile(const std::filesystem::path &path,
                                                         ZPGorvaneArchiveRole) {
    return std::make_unique<ZPGorvaneDataFile>(kWQ2ArchiveFamily, path);
}

const char *classNameOf(ZPGorvaneArchiveRole role, std::uint32_t identifier) {
    if (role == cell)
        return WQRecordClassForCellIdentifier(identifier).name;
    const WQRecordClass *recordClass = WQRecordClassForPortalIdentifier(identifier);
    return recordClass != nullptr ? recordClass->name : nullptr;
}

} // namespace

constexpr ZPGorvaneArchiveFamily kWQArchiveFamily = {
    .game = ZPGorvaneGame::first,
    .headerVersion = 3,
    .archives = kFirstGameArchives,
    .directoryClassName = "WQDirectory",
    .fileEntryClassName = "WQFileEntry",
    .blockStorageAtPath = &ZPGorvaneBlockStorage::initV3StorageWithFileAtPath,
    .newDataFile = &newDataFile,
    .fileEntrySize = 24,
    .readFileEntry = &readFileEntry,
    .hasDates = true,
    .hasVersions = true,
    .newVersion = &newVersion<WQVersion>,
    .classNameOf = &classNameOf};
static_assert(kWQArchiveFamily.directorySize() == 1740);

constexpr ZPGorvaneArchiveFamily kWQRetailArchiveFamily = {
    .game = ZPGorvaneGame::firstRetail,
    .headerVersion = 1,
    .archives = kRetailArchives,
    .directoryClassName = "WQRetailDirectory",
    .fileEntryClassName = "WQRetailFileEntry",
    .blockStorageAtPath = &retailStorageAtPath,
    .newDataFile = &newRetailDataFile,
    .fileEntrySize = 12,
    .readFileEntry = &readRetailFileEntry,
    .hasDates = false,
    .hasVersions = false,
    .newVersion = &newVersion<ZPGorvaneVersion>,
    .classNameOf = nullptr};
static_assert(kWQRetailArchiveFamily.directorySize() == 996);

constexpr ZPGorvaneArchiveFamily kWQ2ArchiveFamily = {
    .game = ZPGorvaneGame::second,
    .headerVersion = 2,
    .archives = {},
    .directoryClassName = "WQ2Directory",
    .fileEntryClassName = "WQ2FileEntry",
    .blockStorageAtPath = &ZPGorvaneBlockStorage::initV2StorageWithFileAtPath,
    .newDataFile = &newSecondGameDataFile,
    .fileEntrySize = 16,
    .readFileEntry = &readSecondGameFileEntry,
    .hasDates = true,
    .hasVersions = false,
    .newVersion = &newVersion<ZPGorvaneVersion>,
    .classNameOf = nullptr};
static_assert(kWQ2ArchiveFamily.directorySize() == 1244);

std::span<const ZPGorvaneArchiveFamily *const> WQArchiveFamilies() {
    static constexpr const ZPGorvaneArchiveFamily *kFamilies[] = {
        &kWQArchiveFamily, &kWQ2ArchiveFamily, &kWQRetailArchiveFamily};
    return kFamilies;
}

const ZPGorvaneArchiveFamily *WQArchiveFamilyWithKey(std::string_view key) {
    const auto families = WQArchiveFamilies();
    const auto found = std::ranges::find_if(
        families, [=](const ZPGorvaneArchiveFamily *family) { return family->key() == key; });
    return found != families.end() ? *found : nullptr;
}

void WQWriteFileEntryToBuffer(const ZPGorvaneFileEntry &entry, ZPData &buffer) {
    for (const std::uint32_t word : {entry.version, entry.identifier, entry.fileOffset,
                                     entry.fileSize, entry.mtime, entry.unknown3})
        ZPAppendLittleInt32(buffer, word);
}
