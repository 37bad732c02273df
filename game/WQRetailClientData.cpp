#include "game/WQRetailClientData.h"

WQRetailClientData::WQRetailClientData(std::filesystem::path path)
    : ZPGorvaneClientData(std::move(path)), _portalDataFile(openDataFile("portal.dat")),
      _cellDataFile(openDataFile("cell.dat")) {
    log("basePath: %s", basePath().c_str());
    log("portal:   %s", _portalDataFile->description().c_str());
    log("cell:     %s", _cellDataFile->description().c_str());
}

std::unique_ptr<WQRetailDataFile> WQRetailClientData::openDataFile(const char *name) {
    auto dataFile = std::make_unique<WQRetailDataFile>(basePath() / name);
    dataFile->setClientData(this);
    dataFile->quickLoadDataVersion();
    return dataFile;
}

WQRetailDataFile *WQRetailClientData::dataFileWithName(std::string_view name) {
    if (name == "portal")
        return portalDataFile();
    if (name == "cell")
        return cellDataFile();
    return nullptr;
}
