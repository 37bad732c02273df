#include "game/WQRetailDataFile.h"

#include "game/WQArchiveFamilies.h"

WQRetailDataFile::WQRetailDataFile(const std::filesystem::path &path)
    : ZPGorvaneDataFile(kWQRetailArchiveFamily, path) {}
