#pragma once

#include "archive/ZPGorvaneFinding.h"

#include <mutex>

class ZPGorvaneDataFile;

/// What is wrong with the structure of an archive, and which of its files that makes worthless or
/// doubtful. Found out when it is first asked for; safe from several threads.
class ArchiveDamage {
  public:
    /// Borrows the archive, which has its index loaded.
    explicit ArchiveDamage(const ZPGorvaneDataFile &dataFile) : _dataFile(dataFile) {}

    [[nodiscard]] const ZPGorvaneFindings &findings() const;
    /// Why a file cannot be read, or not be trusted since another's chain runs into its own; null
    /// where nothing is known against it.
    [[nodiscard]] const std::string *causeOf(std::uint32_t identifier) const;

  private:
    void find() const;

    const ZPGorvaneDataFile &_dataFile;
    mutable std::once_flag _isFound;
    mutable ZPGorvaneFindings _findings;
    /// Those of damaged files, by identifier.
    mutable std::vector<const ZPGorvaneFinding *> _ofFiles;
};
