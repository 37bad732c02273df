#pragma once

#include "archive/ZPGorvaneArchiveFamily.h"
#include "archive/ZPGorvaneClientData.h"
#include "data_tool/ArchiveDamage.h"
#include "decode/WQDecoderSet.h"
#include "game/WQDataFile.h"

/// A name that can stand in a table and be that of a folder: what cannot is written as in
/// addresses, a blank as "%20", so that different names stay different.
[[nodiscard]] std::string plainName(const std::string &name);

/// One opened archive of a data set, with its index loaded.
struct Archive {
    /// Such as "portal"; where no name is known, or several have it, plainName of the file's own
    /// without extension. No two archives of a set have the same.
    std::string name;
    ZPGorvaneArchiveRole role;
    const ZPGorvaneArchiveFamily *family;
    std::unique_ptr<ZPGorvaneDataFile> dataFile;
    std::unique_ptr<ArchiveDamage> damage;

    const ZPGorvaneFileEntryMap &entries() const { return dataFile->fileEntriesByIdentifier(); }
    const ZPGorvaneBlockStorage &storage() const { return *dataFile->blockStorage(); }
    std::string fileName() const { return dataFile->path().filename().string(); }
    WQRecordKind kindOf(std::uint32_t identifier) const;
};

/// What a path on the command line stands for: the archives of a directory, or a single one.
struct DataSet {
    std::filesystem::path path;
    bool isDirectory = false;
    /// At least one.
    std::vector<Archive> archives;
    /// False where an archive of the directory could not be opened, which was said.
    bool isWhole = true;

    /// Says what was found when the indexes were loaded: of many faults only the first.
    void sayFaults() const;
    /// Whether all archives could be opened, and nothing wrong was met in them so far.
    [[nodiscard]] bool isSound() const;

    /// Null when no archive has this name.
    [[nodiscard]] const Archive *archiveWithName(std::string_view name) const;
    /// That of the name, else the first of this role, for a copy under a name of its own. Null when
    /// there is none.
    [[nodiscard]] const Archive *portal() const;
    /// Throws CommandFailure when there is no cell archive of the first game.
    [[nodiscard]] WQDataFile &cellDataFile() const;
    /// The region record is read differently from some data version on.
    [[nodiscard]] WQDecodingContext decodingContext() const;
};

/// The archives of a data set for records that ask for them. Borrows the set.
class DataSetClientData : public ZPGorvaneClientData {
  public:
    explicit DataSetClientData(const DataSet &dataSet)
        : ZPGorvaneClientData(dataSet.path), _dataSet(dataSet) {}
    [[nodiscard]] ZPGorvaneDataFile *dataFileWithName(std::string_view name) override;

  private:
    const DataSet &_dataSet;
};

/// Opens the archives at a path, as those of `family` or, for null, of the family that each of them
/// looks like. Throws CommandFailure when there is none that can be opened.
[[nodiscard]] DataSet openDataSet(const std::filesystem::path &path,
                                  const ZPGorvaneArchiveFamily *family);
