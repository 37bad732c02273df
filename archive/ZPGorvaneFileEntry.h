#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <string>

/// One file of an archive: which, where its chain starts, how long it is. A plain value of 24
/// bytes, since an archive has hundreds of thousands of them.
struct ZPGorvaneFileEntry {
    std::uint32_t version = 0;
    std::uint32_t identifier = 0;
    /// Offset of the first block of the file's chain.
    std::uint32_t fileOffset = 0;
    /// Exact length in bytes.
    std::uint32_t fileSize = 0;
    /// Seconds since 1970-01-01 00:00 UTC.
    std::uint32_t mtime = 0;
    std::uint32_t unknown3 = 0;

    std::chrono::sys_seconds modificationDate() const {
        return std::chrono::sys_seconds(std::chrono::seconds(mtime));
    }
    void setModificationDate(std::chrono::sys_seconds date) {
        mtime = static_cast<std::uint32_t>(date.time_since_epoch().count());
    }

    std::strong_ordering compareByIdentifier(const ZPGorvaneFileEntry &other) const {
        return identifier <=> other.identifier;
    }
    std::strong_ordering compareModificationDate(const ZPGorvaneFileEntry &other) const {
        return mtime <=> other.mtime;
    }

    /// A copy that stands for the file but not for its place: `fileOffset` is 0.
    ZPGorvaneFileEntry copyWithZone() const;
    /// Begins with the name of the class of entries that the archive's family has; an entry itself
    /// does not know its family.
    std::string description(const char *className = "ZPGorvaneFileEntry") const;
};
