#pragma once

#include "archive/ZPGorvaneBlockStorage.h"
#include "archive/ZPGorvaneFileEntry.h"
#include "archive/ZPGorvaneGame.h"
#include "archive/ZPGorvaneLayout.h"

class ZPGorvaneClientData;
class ZPGorvaneDataFile;
class ZPGorvaneVersion;

/// What an archive of a data set holds, which decides how its identifiers are read.
enum class ZPGorvaneArchiveRole : std::uint32_t { portal = 0, highres = 1, cell = 2, local = 3 };

/// One archive of a game's data directory.
struct ZPGorvaneArchiveName {
    const char *fileName;
    /// Under which programs list it.
    const char *name;
    ZPGorvaneArchiveRole role;
};

/// A family of archives, everything that there is to know of it: one constant table a family. The
/// directory and block storage classes are the same for all.
struct ZPGorvaneArchiveFamily {
    ZPGorvaneGame game;
    /// What its header looks like, see ZPGorvaneLayout.
    std::uint32_t headerVersion;
    /// Empty where the names are not known: any archive of a directory belongs to the set then.
    std::span<const ZPGorvaneArchiveName> archives;

    /// The names that descriptions of its nodes and entries begin with.
    const char *directoryClassName;
    const char *fileEntryClassName;
    /// As the storage's own initialisers.
    std::unique_ptr<ZPGorvaneBlockStorage> (*blockStorageAtPath)(const std::filesystem::path &path,
                                                                 ZPError *error);
    /// As the constructor of the family's own class.
    std::unique_ptr<ZPGorvaneDataFile> (*newDataFile)(const std::filesystem::path &path,
                                                      ZPGorvaneArchiveRole role);
    /// Size in bytes of one entry record.
    std::size_t fileEntrySize;
    /// Reads one entry record; false for the record of an empty slot.
    bool (*readFileEntry)(ZPDataCursor &cursor, ZPGorvaneFileEntry &entry);
    /// Whether entries tell when their file was changed, and its version.
    bool hasDates, hasVersions;
    /// Decodes the version record; never null. Throws ZPRangeException when its bytes end too
    /// early, since the data file has words of its own for that.
    std::unique_ptr<ZPGorvaneVersion> (*newVersion)(std::span<const std::byte> data,
                                                    ZPGorvaneClientData *clientData);
    /// The record class of an identifier, null where there is none; no function where no class of
    /// the game is known.
    const char *(*classNameOf)(ZPGorvaneArchiveRole role, std::uint32_t identifier);

    /// The short name that picks it on a command line.
    const char *key() const { return ZPGorvaneGameKey(game); }
    /// Size in bytes of a directory node.
    constexpr std::size_t directorySize() const {
        return ZPGorvaneLayout::kNodeHeaderSize + ZPGorvaneLayout::kEntriesPerNode * fileEntrySize;
    }

    // Null where the family has no such archive. The case of a file's name does not matter.
    [[nodiscard]] const ZPGorvaneArchiveName *archiveInFile(std::string_view fileName) const;
    [[nodiscard]] const ZPGorvaneArchiveName *archiveWithName(std::string_view name) const;
    [[nodiscard]] const ZPGorvaneArchiveName *archiveWithRole(ZPGorvaneArchiveRole role) const;

    /// How a file fares as an archive of this family, by what stands where its header has its magic
    /// numbers and, where two families share those, by whether the rest makes sense. Empty when it
    /// suits.
    [[nodiscard]] std::string reasonAgainst(std::span<const std::byte> file) const;
};

/// The first of several families that a file suits. Null where it suits none; `reason` tells what
/// was found then.
[[nodiscard]] const ZPGorvaneArchiveFamily *
ZPGorvaneFamilyOfFile(std::span<const std::byte> file,
                      std::span<const ZPGorvaneArchiveFamily *const> families, std::string &reason);
