#pragma once

#include "archive/ZPGorvaneBlockStorage.h"
#include "archive/ZPGorvaneFileEntry.h"

class ZPGorvaneClientData;
class ZPGorvaneVersion;

/// What tells one family of archives from another: the header version, the entry record that its
/// directory nodes hold, and its version record. One constant table a family; the directory and
/// data file classes are the same for all.
struct ZPGorvaneArchiveFamily {
    static constexpr std::size_t kEntriesPerNode = 62;
    static constexpr std::size_t kNodeHeaderSize = 252;

    /// The names that descriptions of its nodes and entries begin with.
    const char *directoryClassName;
    const char *fileEntryClassName;
    /// As the storage's own initialisers.
    std::unique_ptr<ZPGorvaneBlockStorage> (*blockStorageAtPath)(const std::filesystem::path &path,
                                                                 ZPError *error);
    /// Size in bytes of one entry record.
    std::size_t fileEntrySize;
    /// Reads one entry record; false for the record of an empty slot.
    bool (*readFileEntry)(ZPDataCursor &cursor, ZPGorvaneFileEntry &entry);
    /// Decodes the version record; never null. Throws ZPRangeException when its bytes end too
    /// early, since the data file has words of its own for that.
    std::unique_ptr<ZPGorvaneVersion> (*newVersion)(std::span<const std::byte> data,
                                                    ZPGorvaneClientData *clientData);

    /// Size in bytes of a directory node.
    constexpr std::size_t directorySize() const {
        return kNodeHeaderSize + kEntriesPerNode * fileEntrySize;
    }
};
