#pragma once

#include "archive/ZPGorvaneDataFile.h"

/// An archive of the first game as it was sold.
class WQRetailDataFile : public ZPGorvaneDataFile {
  public:
    explicit WQRetailDataFile(const std::filesystem::path &path);

    const char *className() const override { return "WQRetailDataFile"; }
};
