#pragma once

#include "archive/ZPGorvaneDataFile.h"

/// An archive of the first game.
class WQDataFile : public ZPGorvaneDataFile {
  public:
    enum Type : std::uint32_t { portal = 0, highres = 1, cell = 2, local = 3 };

    explicit WQDataFile(const std::filesystem::path &path);
    explicit WQDataFile(std::unique_ptr<ZPGorvaneBlockStorage> blockStorage);

    std::uint32_t type() const { return _type; }
    void setType(std::uint32_t type) { _type = type; }

    /// The entries of one land block (identifier bits 16 to 31) of a loaded cell archive, by
    /// identifier: a part of the sorted index, so that no map of its own is kept. Nothing for
    /// other archives, nor for 0xFFFF, the number of the archive's own records.
    std::span<const ZPGorvaneFileEntry> fileEntriesByLandBlock(std::uint16_t number) const;

    const char *className() const override { return "WQDataFile"; }

  private:
    std::uint32_t _type = portal;
};
