#include "game/WQClientData.h"

#include "game/WQRetailClientData.h"
#include "io/ZPSystemLog.h"

namespace {

template <class ClientData>
void registerClass(const char *name, ZPGorvaneGame game) {
    ZPGorvaneClientData::registerClientDataClass(
        {name,
         [](const std::filesystem::path &basePath) -> std::unique_ptr<ZPGorvaneClientData> {
             return std::make_unique<ClientData>(basePath);
         }},
        game);
}

/// Registers before main. Both classes do it here, where WQClientData itself is defined: a file of
/// a static library that nobody names would be left out of the program.
[[maybe_unused]] const bool classesAreRegistered = [] {
    registerClass<WQClientData>("WQClientData", ZPGorvaneGame::first);
    registerClass<WQRetailClientData>("WQRetailClientData", ZPGorvaneGame::firstRetail);
    return true;
}();

template <class Record>
std::unique_ptr<Record> recordOfClass(std::unique_ptr<ZPGorvaneStoredObject> object) {
    auto *record = dynamic_cast<Record *>(object.get());
    if (record != nullptr)
        (void)object.release();
    return std::unique_ptr<Record>(record);
}

} // namespace

WQClientData::WQClientData(std::filesystem::path path)
    : ZPGorvaneClientData(std::move(path)),
      _portalDataFile(openDataFile("client_portal.dat", WQDataFile::portal)),
      _highresDataFile(openDataFile("client_highres.dat", WQDataFile::highres)),
      _cellDataFile(openDataFile("client_cell_1.dat", WQDataFile::cell)),
      _localDataFile(openDataFile("client_local_English.dat", WQDataFile::local)) {
    log("basePath: %s", basePath().c_str());
}

std::unique_ptr<WQDataFile> WQClientData::openDataFile(const char *name, WQDataFile::Type type) {
    auto dataFile = std::make_unique<WQDataFile>(basePath() / name);
    dataFile->setClientData(this);
    dataFile->setType(type);
    dataFile->quickLoadDataVersion();
    return dataFile;
}

// -- archives

WQDataFile *WQClientData::dataFileWithName(std::string_view name) {
    if (name == "portal")
        return portalDataFile();
    if (name == "cell")
        return cellDataFile();
    if (name == "highres")
        return highresDataFile();
    if (name == "local")
        return localDataFile();
    return nullptr;
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
        dataFile->loadFileEntriesIfNecessary();
}

// -- records

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::_newPortalObjectFromData(std::span<const std::byte> data, std::uint32_t identifier) {
    const WQRecordClass *recordClass = objectClassForPortalIdentifier(identifier);
    if (recordClass == nullptr)
        return nullptr;
    auto record = recordClass->newWithData(*recordClass, data, this);
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
    const WQRecordClass &recordClass = WQRecordClassForCellIdentifier(identifier);
    return recordClass.newWithData(recordClass, data, this);
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
WQClientData::newObjectWithIdentifier(std::uint32_t identifier, WQDataFile &inDataFile) {
    const ZPGorvaneFileEntry *entry = inDataFile.fileEntryWithIdentifier(identifier);
    return entry != nullptr ? newObjectForFileEntry(*entry, inDataFile) : nullptr;
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newPortalObjectWithIdentifier(std::uint32_t identifier) {
    return newObjectWithIdentifier(identifier, *_portalDataFile);
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newHighresObjectWithIdentifier(std::uint32_t identifier) {
    return newObjectWithIdentifier(identifier, *_highresDataFile);
}

std::unique_ptr<ZPGorvaneStoredObject>
WQClientData::newCellObjectWithIdentifier(std::uint32_t identifier) {
    return newObjectWithIdentifier(identifier, *_cellDataFile);
}

// -- tables

const WQWorldInfo *WQClientData::worldInfo() {
    if (_worldInfo == nullptr)
        _worldInfo = recordOfClass<WQWorldInfo>(newPortalObjectWithIdentifier(0x13000000));
    return _worldInfo.get();
}

const ZPGorvaneStoredObject *WQClientData::loadTableIfNecessary(Table &table,
                                                                std::uint32_t identifier) {
    if (table == nullptr)
        table = newPortalObjectWithIdentifier(identifier);
    return table.get();
}

const ZPGorvaneStoredObject *WQClientData::titleTable() {
    return loadTableIfNecessary(_titleTable, 0x22000041);
}

const ZPGorvaneStoredObject *WQClientData::skillTable() {
    return loadTableIfNecessary(_skillTable, 0x0E000004);
}

const ZPGorvaneStoredObject *WQClientData::componentTable() {
    return loadTableIfNecessary(_componentTable, 0x0E00000F);
}

const ZPGorvaneStoredObject *WQClientData::spellTable() {
    return loadTableIfNecessary(_spellTable, 0x0E00000E);
}

const ZPGorvaneStoredObject *WQClientData::speciesTable() {
    return loadTableIfNecessary(_speciesTable, 0x2200000E);
}

const ZPGorvaneStoredObject *WQClientData::raceTable() {
    return loadTableIfNecessary(_raceTable, 0x2200000B);
}

const ZPGorvaneStoredObject *WQClientData::genderTable() {
    return loadTableIfNecessary(_genderTable, 0x2200000A);
}

const ZPGorvaneStoredObject *WQClientData::materialTable() {
    return loadTableIfNecessary(_materialTable, 0x27000000);
}

const ZPGorvaneStoredObject *WQClientData::contractTable() {
    return loadTableIfNecessary(_contractTable, 0x0E00001D);
}

// -- look-ups of one type

std::unique_ptr<WQUndecodedPortalObject>
WQClientData::newPortalObjectOfType(std::uint8_t type, std::uint32_t identifier) {
    if (identifier >> 24 != type)
        return nullptr;
    return recordOfClass<WQUndecodedPortalObject>(newPortalObjectWithIdentifier(identifier));
}

WQRecordCache::Access WQClientData::objectOfType(std::uint8_t type, std::uint32_t identifier,
                                                 WQRecordCache &inCache, bool isPinned) {
    if (identifier >> 24 != type)
        return {};
    const std::lock_guard guard(inCache.lock());
    if (auto access = inCache.objectForKey(identifier))
        return access;
    auto record = newPortalObjectOfType(type, identifier);
    if (record == nullptr)
        return {};
    const std::size_t cost = record->data().size();
    return inCache.setObject(std::move(record), identifier, cost, isPinned);
}

WQRecordCache::Access WQClientData::paletteWithIdentifier(std::uint32_t identifier) {
    return objectOfType(0x04, identifier, _paletteCache, true);
}

WQRecordCache::Access WQClientData::paletteGroupWithIdentifier(std::uint32_t identifier) {
    return objectOfType(0x0F, identifier, _paletteGroupCache, true);
}

WQRecordCache::Access WQClientData::soundWithIdentifier(std::uint32_t identifier) {
    return objectOfType(0x0A, identifier, _soundCache, false);
}

std::unique_ptr<WQUndecodedPortalObject>
WQClientData::imageWithIdentifier(std::uint32_t identifier) {
    return newPortalObjectOfType(0x06, identifier);
}

std::unique_ptr<WQUndecodedPortalObject>
WQClientData::soundTableWithIdentifier(std::uint32_t identifier) {
    return newPortalObjectOfType(0x20, identifier);
}
