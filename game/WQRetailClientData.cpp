#include "game/WQRetailClientData.h"

#include "game/WQArchiveFamilies.h"

WQRetailClientData::WQRetailClientData(std::filesystem::path path)
    : ZPGorvaneClientData(std::move(path)),
      _portalDataFile(openDataFile(ZPGorvaneArchiveRole::portal)),
      _cellDataFile(openDataFile(ZPGorvaneArchiveRole::cell)) {
    log("basePath: %s", basePath().c_str());
    log("portal:   %s", _portalDataFile->description().c_str());
    log("cell:     %s", _cellDataFile->description().c_str());
}

std::unique_ptr<WQRetailDataFile> WQRetailClientData::openDataFile(ZPGorvaneArchiveRole role) {
    const char *fileName = kWQRetailArchiveFamily.archiveWithRole(role)->fileName;
    auto dataFile = std::make_unique<WQRetailDataFile>(basePath() / fileName);
    dataFile->setClientData(this);
    dataFile->quickLoadDataVersion();
    return dataFile;
}

WQRetailDataFile *WQRetailClientData::dataFileWithName(std::string_view name) {
    const ZPGorvaneArchiveName *archive = kWQRetailArchiveFamily.archiveWithName(name);
    if (archive == nullptr)
        return nullptr;
    return archive->role == ZPGorvaneArchiveRole::cell ? cellDataFile() : portalDataFile();
}
