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
class WQClientData : public ZPGorvaneClientData {
  public:
    /// Opens the archives and reads their data versions, but not their indexes.
    explicit WQClientData(std::filesystem::path basePath);

    /// The client data that a record was given, where it is of this class.
    static const WQClientData *fromClientData(const ZPGorvaneClientData *clientData) {
        return dynamic_cast<const WQClientData *>(clientData);
    }

    // Never null.
    WQDataFile *portalDataFile() const { return _portalDataFile.get(); }
    WQDataFile *highresDataFile() const { return _highresDataFile.get(); }
    WQDataFile *cellDataFile() const { return _cellDataFile.get(); }
    WQDataFile *localDataFile() const { return _localDataFile.get(); }
    /// "portal", "cell", "highres" or "local".
    WQDataFile *dataFileWithName(std::string_view name) override;
    /// Null for a number that is no WQDataFile::Type.
    WQDataFile *dataFileOfType(std::uint32_t type) const;
    void loadAllFileEntries() override;

    static const WQRecordClass *objectClassForPortalIdentifier(std::uint32_t identifier) {
        return WQRecordClassForPortalIdentifier(identifier);
    }

    // A record read from an archive, whose index is loaded if need be. Null when there is no such
    // file, no class for it, or its bytes make no record.
    std::unique_ptr<ZPGorvaneStoredObject> newPortalObjectWithIdentifier(std::uint32_t identifier);
    std::unique_ptr<ZPGorvaneStoredObject> newHighresObjectWithIdentifier(std::uint32_t identifier);
    std::unique_ptr<ZPGorvaneStoredObject> newCellObjectWithIdentifier(std::uint32_t identifier);
    std::unique_ptr<ZPGorvaneStoredObject>
    newObjectForFileEntry(const ZPGorvaneFileEntry &entry,
                          const ZPGorvaneDataFile &ofDataFile) override;

    // Tables. One that cannot be loaded is null and is tried again the next time.
    const WQWorldInfo *worldInfo();
    const ZPGorvaneStoredObject *titleTable();
    const ZPGorvaneStoredObject *skillTable();
    const ZPGorvaneStoredObject *componentTable();
    const ZPGorvaneStoredObject *spellTable();
    const ZPGorvaneStoredObject *speciesTable();
    const ZPGorvaneStoredObject *raceTable();
    const ZPGorvaneStoredObject *genderTable();
    const ZPGorvaneStoredObject *materialTable();
    const ZPGorvaneStoredObject *contractTable();

    // Cached look-ups: empty for an identifier of another type and for a record that is not there.
    // Palettes and palette groups stay in the cache; sounds do while they are in use.
    WQRecordCache::Access paletteWithIdentifier(std::uint32_t identifier);
    WQRecordCache::Access paletteGroupWithIdentifier(std::uint32_t identifier);
    WQRecordCache::Access soundWithIdentifier(std::uint32_t identifier);
    WQRecordCache &paletteCache() { return _paletteCache; }
    WQRecordCache &paletteGroupCache() { return _paletteGroupCache; }
    WQRecordCache &soundCache() { return _soundCache; }

    // Not cached; null for an identifier of another type.
    std::unique_ptr<WQUndecodedPortalObject> imageWithIdentifier(std::uint32_t identifier);
    std::unique_ptr<WQUndecodedPortalObject> soundTableWithIdentifier(std::uint32_t identifier);

  private:
    using Table = std::unique_ptr<const ZPGorvaneStoredObject>;

    std::unique_ptr<WQDataFile> openDataFile(const char *name, WQDataFile::Type type);
    std::unique_ptr<ZPGorvaneStoredObject> newObjectWithIdentifier(std::uint32_t identifier,
                                                                   WQDataFile &inDataFile);
    std::unique_ptr<ZPGorvaneStoredObject> _newPortalObjectFromData(std::span<const std::byte> data,
                                                                    std::uint32_t identifier);
    std::unique_ptr<ZPGorvaneStoredObject> _newCellObjectFromData(std::span<const std::byte> data,
                                                                  std::uint32_t identifier);
    std::unique_ptr<WQUndecodedPortalObject> newPortalObjectOfType(std::uint8_t type,
                                                                   std::uint32_t identifier);
    const ZPGorvaneStoredObject *loadTableIfNecessary(Table &table, std::uint32_t identifier);
    WQRecordCache::Access objectOfType(std::uint8_t type, std::uint32_t identifier,
                                       WQRecordCache &inCache, bool isPinned);

    std::unique_ptr<WQDataFile> _portalDataFile;
    std::unique_ptr<WQDataFile> _highresDataFile;
    std::unique_ptr<WQDataFile> _cellDataFile;
    std::unique_ptr<WQDataFile> _localDataFile;
    Table _titleTable, _skillTable, _componentTable, _spellTable;
    std::unique_ptr<WQWorldInfo> _worldInfo;
    Table _speciesTable, _raceTable, _genderTable, _materialTable, _contractTable;
    WQRecordCache _paletteCache{"Palette cache"};
    WQRecordCache _paletteGroupCache{"Palette group cache"};
    WQRecordCache _soundCache{"Sound cache"};
};
