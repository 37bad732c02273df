#pragma once

#include "archive/ZPGorvaneFinding.h"

#include <map>
#include <mutex>
#include <unordered_set>
#include <utility>

/// What reading an archive has shown to be wrong with it: each place once, however often it is
/// read. The first so many are kept whole, in an order that does not depend on threads: those of
/// the archive itself as they were found, then those of its files by identifier. Beyond these,
/// places are counted. Safe from several threads.
class ZPGorvaneFindingCollector {
  public:
    static constexpr std::size_t kMostKept = 1000;

    /// False where something was found at this place, of this file, before.
    bool add(ZPGorvaneFinding finding);

    /// How many places there are, kept or not.
    std::size_t count() const;
    /// The same of those that concern no single file, behind which others may be missing.
    std::size_t countWithoutFile() const;
    ZPGorvaneFindings kept() const;

  private:
    /// So many places are remembered; beyond them, one that is read again counts again.
    static constexpr std::size_t kMostPlaces = 1 << 18;

    mutable std::mutex _lock;
    /// Offsets, with the identifier above where a file is concerned.
    std::unordered_set<std::uint64_t> _places, _placesOfFiles;
    std::size_t _count = 0, _countWithoutFile = 0;
    /// By identifier, -1 for none, then by the order or the place.
    std::map<std::pair<std::int64_t, std::uint64_t>, ZPGorvaneFinding> _kept;
};
