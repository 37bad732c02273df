#pragma once

#include "game/WQDataFile.h"
#include "game/WQFileHasher.h"
#include "game/WQLandBlockSet.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// What changed between an older archive and a newer one: the files that came, went or differ in
/// their SHA-1, and for cell archives the land blocks that they belong to.
///
/// A file that cannot be read has no digest and counts as not there, unless such files are to be
/// left out. With either archive missing there is nothing to compare: lists and sets stay without a
/// value.
class WQDataFileComparison {
  public:
    /// Borrows both; either may be null.
    WQDataFileComparison(WQDataFile *oldDataFile, WQDataFile *newDataFile)
        : _dataFile1(oldDataFile), _dataFile2(newDataFile) {}

    /// From now on nothing is said of a file that one of the archives has, or may have had, and
    /// that cannot be read there, nor of one that `isDoubtful`, if given, holds to be so.
    void leaveOutUnreadableFiles(std::function<bool(std::uint32_t identifier)> isDoubtful = {}) {
        _leavesOutUnreadable = true;
        _isDoubtful = std::move(isDoubtful);
    }
    /// How many were left out.
    std::size_t leftOutCount() const { return _leftOutCount; }
    /// Of the files that the archives' indexes have, how many could not be read.
    std::size_t unreadableCount1() const { return _unreadableCount1; }
    std::size_t unreadableCount2() const { return _unreadableCount2; }

    /// Reads every file of both archives, gives each its digest and compares these, on all
    /// processors; loads their indexes if necessary.
    void buildComparison();
    /// The digests of one archive's readable files. Logs progress every 1000 files.
    [[nodiscard]] WQFileDigestMap buildSHA1DigestsByIDForDataFile(WQDataFile &dataFile) const;

    // Each writes a text as a whole or not at all, and is false when that fails. The summaries go
    // to standard output when there is no path.
    [[nodiscard]] bool saveFile1DigestsToURL(const std::filesystem::path &path,
                                             ZPError *error = nullptr) const;
    [[nodiscard]] bool saveFile2DigestsToURL(const std::filesystem::path &path,
                                             ZPError *error = nullptr) const;
    [[nodiscard]] bool saveSummaryToURL(const std::filesystem::path *path,
                                        ZPError *error = nullptr) const;
    [[nodiscard]] bool saveLandBlockSummaryToURL(const std::filesystem::path *path,
                                                 ZPError *error = nullptr) const;
    /// Adds a line for each block: number, map coordinate, and the name of a known dungeon.
    static void _appendLandBlocks(std::span<const std::uint32_t> landBlocks, std::string &toString);

    const WQDataFile *dataFile1() const { return _dataFile1; }
    const WQDataFile *dataFile2() const { return _dataFile2; }
    /// Without a value where there is no archive.
    const std::optional<WQFileDigestMap> &digests1() const { return _digests1; }
    const std::optional<WQFileDigestMap> &digests2() const { return _digests2; }

    using FileKeys = std::vector<std::uint32_t>;
    /// Identifiers, ascending.
    const std::optional<FileKeys> &fileKeysAdded() const { return _fileKeysAdded; }
    const std::optional<FileKeys> &fileKeysRemoved() const { return _fileKeysRemoved; }
    const std::optional<FileKeys> &fileKeysChanged() const { return _fileKeysChanged; }
    /// One block may be in several of the sets. Without a value for other than cell archives.
    const std::optional<WQLandBlockSet> &landBlocksAdded() const { return _landBlocksAdded; }
    const std::optional<WQLandBlockSet> &landBlocksRemoved() const { return _landBlocksRemoved; }
    const std::optional<WQLandBlockSet> &landBlocksChanged() const { return _landBlocksChanged; }

  private:
    WQFileDigestMap buildDigests(WQFileHasher &hasher, WQFileHasher *newer) const;
    void compareDigests();
    bool isLeftOut(std::uint32_t identifier);

    WQDataFile *_dataFile1;
    WQDataFile *_dataFile2;
    bool _leavesOutUnreadable = false;
    std::function<bool(std::uint32_t)> _isDoubtful;
    std::size_t _leftOutCount = 0, _unreadableCount1 = 0, _unreadableCount2 = 0;
    std::optional<WQFileDigestMap> _digests1;
    std::optional<WQFileDigestMap> _digests2;
    std::optional<FileKeys> _fileKeysAdded;
    std::optional<FileKeys> _fileKeysRemoved;
    std::optional<FileKeys> _fileKeysChanged;
    std::optional<WQLandBlockSet> _landBlocksAdded;
    std::optional<WQLandBlockSet> _landBlocksRemoved;
    std::optional<WQLandBlockSet> _landBlocksChanged;
};
