#pragma once

#include "archive/ZPGorvaneClientData.h"
#include "game/WQRetailDataFile.h"

/// The first game's data set as it was sold: two archives, no tables, no caches.
class WQRetailClientData : public ZPGorvaneClientData {
  public:
    explicit WQRetailClientData(std::filesystem::path basePath);

    // Never null.
    WQRetailDataFile *portalDataFile() const { return _portalDataFile.get(); }
    WQRetailDataFile *cellDataFile() const { return _cellDataFile.get(); }
    /// "portal" or "cell".
    WQRetailDataFile *dataFileWithName(std::string_view name) override;

  private:
    std::unique_ptr<WQRetailDataFile> openDataFile(ZPGorvaneArchiveRole role);

    std::unique_ptr<WQRetailDataFile> _portalDataFile;
    std::unique_ptr<WQRetailDataFile> _cellDataFile;
};
