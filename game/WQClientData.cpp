#include "game/WQClientData.h"

#include "game/WQArchiveFamilies.h"
#include "io/ZPSystemLog.h"

WQClientData::WQClientData() : ZPGorvaneClientData(std::filesystem::path()) {}

WQClientData::WQClientData(std::filesystem::path path)
    : ZPGorvaneClientData(std::move(path)),
      _portalDataFile(openDataFile(ZPGorvaneArchiveRole::portal)),
      _highresDataFile(openDataFile(ZPGorvaneArchiveRole::highres)),
      _cellDataFile(openDataFile(ZPGorvaneArchiveRole::cell)),
      _localDataFile(openDataFile(ZPGorvaneArchiveRole::local)) {
    log("basePath: %s", basePath().c_str());
}

std::unique_ptr<WQDataFile> WQClientData::openDataFile(ZPGorvaneArchiveRole role) {
    const char *fileName = kWQArchiveFamily.archiveWithRole(role)->fileName;
    auto dataFile = std::make_unique<WQDataFile>(basePath() / fileName);
    dataFile->setClientData(this);
    dataFile->setType(static_cast<std::uint32_t>(role));
    dataFile->quickLoadDataVersion();
    return dataFile;
}

// -- archives

WQDataFile *WQClientData::dataFileWithName(std::string_view name) {
    const ZPGorvaneArchiveName *archive = kWQArchiveFamily.archiveWithName(name);
    return archive != nullptr ? dataFileOfType(static_cast<std::uint32_t>(archive->role)) : nullptr;
}

WQDataFile *WQClientData::dataFileOfType(std::uint32_t type) const {
    switch (type) {
    case WQDataFile::portal: return portalDataFile();
    case WQDataFile::highres: return highresDataFile();
    case WQDataFile::cell: return cellDataFile();
    case WQDataFile::local: return localDataFile();
    default: return nullptr;
    }
}

void WQClientData::loadAllFileEntries() {
    for (auto *dataFile : {portalDataFile(), highresDataFile(), localDataFile(), cellDataFile()})
        if (dataFile != nullptr)
            dataFile->loadFileEntriesIfNecessary();
}

// -- records

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::_newPortalObjectFromData(std::span<const std::byte> data, std::uint32_t identifier) {
    const WQRecordClass *recordClass = objectClassForPortalIdentifier(identifier);
    if (recordClass == nullptr)
        return nullptr;
    auto record = recordClass->newRecord(data, this);
    if (record == nullptr)
        return nullptr;
    if (!recordClass->isIdentifierInData)
        record->setIdentifier(identifier);
    else if (record->identifier() != identifier)
        ZPLog("Warning: Identifier stored in file (%08x) doesn't match identifier passed in (%08x)",
              record->identifier(), identifier);
    return record;
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::_newCellObjectFromData(std::span<const std::byte> data, std::uint32_t identifier) {
    return WQRecordClassForCellIdentifier(identifier).newRecord(data, this);
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newObjectForFileEntry(const ZPGorvaneFileEntry &entry,
                                    const ZPGorvaneDataFile &ofDataFile) {
    const bool isCell = &ofDataFile == cellDataFile();
    if (!isCell && &ofDataFile != portalDataFile() && &ofDataFile != highresDataFile() &&
        &ofDataFile != localDataFile())
        return nullptr;
    // Bytes that cannot be read are no bytes: the record's class refuses them.
    ZPData scratch;
    const auto bytes =
        ofDataFile.readBytesForFileEntry(entry, scratch).value_or(std::span<const std::byte>());
    return isCell ? _newCellObjectFromData(bytes, entry.identifier)
                  : _newPortalObjectFromData(bytes, entry.identifier);
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newObjectWithIdentifier(std::uint32_t identifier, WQDataFile *inDataFile) {
    const ZPGorvaneFileEntry *entry =
        inDataFile != nullptr ? inDataFile->fileEntryWithIdentifier(identifier) : nullptr;
    return entry != nullptr ? newObjectForFileEntry(*entry, *inDataFile) : nullptr;
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newPortalObjectWithIdentifier(std::uint32_t identifier) {
    return newObjectWithIdentifier(identifier, portalDataFile());
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newHighresObjectWithIdentifier(std::uint32_t identifier) {
    return newObjectWithIdentifier(identifier, highresDataFile());
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newCellObjectWithIdentifier(std::uint32_t identifier) {
    return newObjectWithIdentifier(identifier, cellDataFile());
}

// -- tables

const WQWorldInfo *WQClientData::worldInfo() {
    // The class that the table of classes has for it.
    return static_cast<const WQWorldInfo *>(
        loadTableIfNecessary(_worldInfo, kWQWorldInfoIdentifier));
}

const ZPGorvaneStoredObject *WQClientData::loadTableIfNecessary(Table &table,
                                                                std::uint32_t identifier) {
    if (table == nullptr)
        table = newPortalObjectWithIdentifier(identifier);
    return table.get();
}

const ZPGorvaneStoredObject *WQClientData::titleTable() {
    return loadTableIfNecessary(_titleTable, kWQTitleTableIdentifier);
}

const ZPGorvaneStoredObject *WQClientData::skillTable() {
    return loadTableIfNecessary(_skillTable, kWQSkillTableIdentifier);
}

const ZPGorvaneStoredObject *WQClientData::componentTable() {
    return loadTableIfNecessary(_componentTable, kWQComponentTableIdentifier);
}

const ZPGorvaneStoredObject *WQClientData::spellTable() {
    return loadTableIfNecessary(_spellTable, kWQSpellTableIdentifier);
}

const ZPGorvaneStoredObject *WQClientData::speciesTable() {
    return loadTableIfNecessary(_speciesTable, kWQSpeciesTableIdentifier);
}

const ZPGorvaneStoredObject *WQClientData::raceTable() {
    return loadTableIfNecessary(_raceTable, kWQRaceTableIdentifier);
}

const ZPGorvaneStoredObject *WQClientData::genderTable() {
    return loadTableIfNecessary(_genderTable, kWQGenderTableIdentifier);
}

const ZPGorvaneStoredObject *WQClientData::materialTable() {
    return loadTableIfNecessary(_materialTable, kWQMaterialTableIdentifier);
}

const ZPGorvaneStoredObject *WQClientData::contractTable() {
    return loadTableIfNecessary(_contractTable, kWQContractTableIdentifier);
}

// -- look-ups of one type

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newPortalObjectOfType(std::uint8_t type, std::uint32_t identifier) {
    return WQTypeOfIdentifier(identifier) == type ? newPortalObjectWithIdentifier(identifier)
                                                  : nullptr;
}

WQRecordCache::Access WQClientData::objectOfType(std::uint8_t type, std::uint32_t identifier,
                                                 WQRecordCache &inCache, bool isPinned) {
    if (WQTypeOfIdentifier(identifier) != type)
        return {};
    const std::lock_guard guard(inCache.lock());
    if (auto access = inCache.objectForKey(identifier))
        return access;
    auto record = newPortalObjectWithIdentifier(identifier);
    if (record == nullptr)
        return {};
    const std::size_t cost = _portalDataFile->fileEntryWithIdentifier(identifier)->fileSize;
    return inCache.setObject(std::move(record), identifier, cost, isPinned);
}

WQRecordCache::Access WQClientData::paletteWithIdentifier(std::uint32_t identifier) {
    return objectOfType(kWQPaletteType, identifier, _paletteCache, true);
}

WQRecordCache::Access WQClientData::paletteGroupWithIdentifier(std::uint32_t identifier) {
    return objectOfType(kWQPaletteGroupType, identifier, _paletteGroupCache, true);
}

WQRecordCache::Access WQClientData::soundWithIdentifier(std::uint32_t identifier) {
    return objectOfType(kWQSoundType, identifier, _soundCache, false);
}

std::unique_ptr<ZPGorvaneStoredObject> WQClientData::imageWithIdentifier(std::uint32_t identifier) {
    return newPortalObjectOfType(kWQImageType, identifier);
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::soundTableWithIdentifier(std::uint32_t identifier) {
    return newPortalObjectOfType(kWQSoundTableType, identifier);
}
