#pragma once

#include "game/WQDataFile.h"
#include "game/WQFileDigestMap.h"

#include <cstdint>
#include <vector>

/// Makes the SHA-1 digests of an archive's files, on all processors.
///
/// Nearly all files of two clients are equal, and a comparison of bytes costs a small part of a
/// digest. So the hasher of an older archive may take the newer one's along: a file that has the
/// same bytes there has its digest already, and only the rest are left to hash.
class WQFileHasher {
  public:
    /// Borrows the archive, and loads its index if necessary.
    explicit WQFileHasher(WQDataFile &dataFile);

    /// Hashes the files that have no digest yet, and logs progress every 1000 files. Those of
    /// `newer`, if given, that hold the same bytes get theirs along.
    void hashFiles(WQFileHasher *newer = nullptr);

    /// The digests of the files that could be read; none are left here.
    [[nodiscard]] WQFileDigestMap takeDigests();

  private:
    enum class State : std::uint8_t { waiting, hashed, unreadable };
    class Part;

    std::optional<std::span<const std::byte>> readFile(std::size_t index, ZPData &scratch);
    void setDigest(std::size_t index, const ZPSHA1Digest &digest) {
        _digests.data()[index].digest = digest;
        _states[index] = State::hashed;
    }

    const WQDataFile &_dataFile;
    const ZPGorvaneFileEntryMap &_entries;
    // One of each an entry, in the order of the index.
    ZPLargeArray<WQFileDigest> _digests;
    std::vector<State> _states;
};
