#pragma once

#include "archive/ZPGorvaneClientData.h"

#include <span>

/// What an archive of a data set holds, which decides how its identifiers are read.
enum class ArchiveRole : std::uint8_t {
    portal,
    highres,
    cell,
    local,
};

/// One archive file of a game's data directory.
struct ArchiveFileName {
    const char *fileName;
    /// Under which the archive is listed.
    const char *name;
    ArchiveRole role;
};

/// A family of archives: everything that the tool has to know of it.
struct GameRow {
    ZPGorvaneGame game;
    /// The short name that picks it on the command line.
    const char *key;
    /// What the header looks like, see ZPGorvaneBlockStorage.
    std::uint32_t headerVersion;
    const ZPGorvaneArchiveFamily *family;
    /// Empty where the names are not known: every archive of the directory belongs to the set then.
    std::span<const ArchiveFileName> files;
    /// The record class of an identifier, null where there is none; no function where no class of
    /// the game is known.
    const char *(*classNameOf)(ArchiveRole role, std::uint32_t identifier);
    /// Whether entries tell when their file was changed, and its version.
    bool hasDates, hasVersions;
};

std::span<const GameRow> gameTable();
/// Null for a key that is none.
[[nodiscard]] const GameRow *gameWithKey(std::string_view key);
