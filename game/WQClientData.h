#pragma once

#include "archive/ZPGorvaneClientData.h"
#include "game/WQDataFile.h"
#include "game/WQRecordCache.h"
#include "game/WQRecordClass.h"
#include "game/WQWorldInfo.h"

/// The first game's data set: four archives of one directory, opened and typed, and the knowledge
/// of which class reads which record.
///
/// A missing archive is logged and fails nothing until something of it is asked for. The tables and
/// `worldInfo` are loaded on first use, from one thread; cached look-ups may come from several.
/// Pointers that are returned belong to this object and live as long as it does.
class WQClientData : public ZPGorvaneClientData, private WQRecordCache::Delegate {
  public:
    /// No directory and no archives: all of them are null, and so is whatever is asked for.
    WQClientData();
    /// Opens the archives and reads their data versions, but not their indexes.
    explicit WQClientData(std::filesystem::path basePath);

    // Not null for client data of a directory, whether its archives exist or not.
    WQDataFile *portalDataFile() const { return _portalDataFile.get(); }
    WQDataFile *highresDataFile() const { return _highresDataFile.get(); }
    WQDataFile *cellDataFile() const { return _cellDataFile.get(); }
    WQDataFile *localDataFile() const { return _localDataFile.get(); }
    /// "portal", "cell", "highres" or "local"; null for any other name.
    [[nodiscard]] WQDataFile *dataFileWithName(std::string_view name) override;
    /// Null for a number that is no WQDataFile::Type.
    [[nodiscard]] WQDataFile *dataFileOfType(std::uint32_t type) const;
    void loadAllFileEntries() override;

    /// Null for an identifier that belongs to no class.
    [[nodiscard]] static const WQRecordClass *
    objectClassForPortalIdentifier(std::uint32_t identifier) {
        return WQRecordClassForPortalIdentifier(identifier);
    }

    // A record read from an archive, whose index is loaded if need be. Null when there is no such
    // file, no class for it, or its bytes make no record.
    [[nodiscard]] std::unique_ptr<ZPGorvaneStoredObject>
    newPortalObjectWithIdentifier(std::uint32_t identifier);
    [[nodiscard]] std::unique_ptr<ZPGorvaneStoredObject>
    newHighresObjectWithIdentifier(std::uint32_t identifier);
    [[nodiscard]] std::unique_ptr<ZPGorvaneStoredObject>
    newCellObjectWithIdentifier(std::uint32_t identifier);
    [[nodiscard]] std::unique_ptr<ZPGorvaneStoredObject>
    newObjectForFileEntry(const ZPGorvaneFileEntry &entry,
                          const ZPGorvaneDataFile &ofDataFile) override;

    // Tables. One that cannot be loaded is null and is tried again the next time.
    [[nodiscard]] const WQWorldInfo *worldInfo();
    [[nodiscard]] const ZPGorvaneStoredObject *titleTable();
    [[nodiscard]] const ZPGorvaneStoredObject *skillTable();
    [[nodiscard]] const ZPGorvaneStoredObject *componentTable();
    [[nodiscard]] const ZPGorvaneStoredObject *spellTable();
    [[nodiscard]] const ZPGorvaneStoredObject *speciesTable();
    [[nodiscard]] const ZPGorvaneStoredObject *raceTable();
    [[nodiscard]] const ZPGorvaneStoredObject *genderTable();
    [[nodiscard]] const ZPGorvaneStoredObject *materialTable();
    [[nodiscard]] const ZPGorvaneStoredObject *contractTable();

    // Cached look-ups: empty for an identifier of another type and for a record that is not there.
    // Palettes and palette groups stay in the cache; sounds do while they are in use.
    [[nodiscard]] WQRecordCache::Access paletteWithIdentifier(std::uint32_t identifier);
    [[nodiscard]] WQRecordCache::Access paletteGroupWithIdentifier(std::uint32_t identifier);
    [[nodiscard]] WQRecordCache::Access soundWithIdentifier(std::uint32_t identifier);
    WQRecordCache &paletteCache() { return _paletteCache; }
    WQRecordCache &paletteGroupCache() { return _paletteGroupCache; }
    WQRecordCache &soundCache() { return _soundCache; }

    // Not cached; null for an identifier of another type.
    [[nodiscard]] std::unique_ptr<ZPGorvaneStoredObject>
    imageWithIdentifier(std::uint32_t identifier);
    [[nodiscard]] std::unique_ptr<ZPGorvaneStoredObject>
    soundTableWithIdentifier(std::uint32_t identifier);

  private:
    using Table = std::unique_ptr<const ZPGorvaneStoredObject>;

    std::unique_ptr<WQDataFile> openDataFile(ZPGorvaneArchiveRole role);
    std::unique_ptr<ZPGorvaneStoredObject> newObjectWithIdentifier(std::uint32_t identifier,
                                                                   WQDataFile *inDataFile);
    std::unique_ptr<ZPGorvaneStoredObject> _newPortalObjectFromData(std::span<const std::byte> data,
                                                                    std::uint32_t identifier);
    std::unique_ptr<ZPGorvaneStoredObject> _newCellObjectFromData(std::span<const std::byte> data,
                                                                  std::uint32_t identifier);
    std::unique_ptr<ZPGorvaneStoredObject> newPortalObjectOfType(std::uint8_t type,
                                                                 std::uint32_t identifier);
    const ZPGorvaneStoredObject *loadTableIfNecessary(Table &table, std::uint32_t identifier);
    WQRecordCache::Access objectOfType(std::uint8_t type, std::uint32_t identifier,
                                       WQRecordCache &inCache, bool isPinned);
    /// Evicted records leave nothing behind.
    void cache(WQRecordCache &, const ZPGorvaneStoredObject & /*willEvictObject*/) override {}

    std::unique_ptr<WQDataFile> _portalDataFile;
    std::unique_ptr<WQDataFile> _highresDataFile;
    std::unique_ptr<WQDataFile> _cellDataFile;
    std::unique_ptr<WQDataFile> _localDataFile;
    Table _titleTable, _skillTable, _componentTable, _spellTable, _worldInfo;
    Table _speciesTable, _raceTable, _genderTable, _materialTable, _contractTable;
    WQRecordCache _paletteCache{"Palette cache", this};
    WQRecordCache _paletteGroupCache{"Palette group cache", this};
    WQRecordCache _soundCache{"Sound cache", this};
};
