#pragma once

#include "data_tool/DataSet.h"
#include "data_tool/FileSelection.h"

/// A file that only one of two archives has, or that differs between them.
struct FileChange {
    std::uint32_t identifier;
    // Null where the archive does not have the file.
    const ZPGorvaneFileEntry *before, *after;
};

struct ArchiveDifference {
    /// By identifier.
    std::vector<FileChange> changes;
    /// Files that cannot be compared, and why: damaged in one of the archives, or perhaps lost
    /// there. They are among no changes.
    std::vector<std::string> faults;
};

/// Compares the selected files of two archives byte for byte, on all processors. Either may be
/// null, and has no files then.
[[nodiscard]] ArchiveDifference compareArchives(const Archive *before, const Archive *after,
                                                const FileSelection &selection);
