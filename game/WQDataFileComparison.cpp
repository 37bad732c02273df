#include "game/WQDataFileComparison.h"

#include "game/WQKnownDungeons.h"
#include "game/WQMapCoordinate.h"
#include "io/ZPAtomicFile.h"
#include "io/ZPBackgroundWork.h"
#include "io/ZPSystemLog.h"

#include <cerrno>
#include <cstdio>

namespace {

bool saveText(const std::string &text, const std::filesystem::path *path, ZPError *error) {
    if (path != nullptr)
        return ZPWriteTextToPath(text, *path, error);
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return true;
    return ZPFail(error, ZPError::posix(errno));
}

bool saveDigests(const std::optional<WQFileDigestMap> &digests, const std::filesystem::path &path,
                 ZPError *error) {
    std::string text;
    if (digests)
        for (const WQFileDigest &digest : *digests)
            text += ZPFormat("%08x = %s\n", digest.identifier, digest.text().c_str());
    return saveText(text, &path, error);
}

std::string summaryHead(std::size_t added, std::size_t removed, std::size_t changed) {
    return ZPFormat("added: %zu, removed: %zu, changed: %zu\n", added, removed, changed);
}

void appendTitle(std::string &text, const char *title) {
    text.append(70, '-').append("\n").append(title).append(":\n");
}

} // namespace

// -- comparing

void WQDataFileComparison::buildComparison() {
    std::optional<WQFileHasher> hasher1, hasher2;
    if (_dataFile1 != nullptr)
        hasher1.emplace(*_dataFile1);
    if (_dataFile2 != nullptr)
        hasher2.emplace(*_dataFile2);
    std::future<void> release;
    if (hasher1) {
        _digests1 = buildDigests(*hasher1, hasher2 ? &*hasher2 : nullptr);
        // Unmapping takes a while, and can go beside the rest.
        release = ZPDoInBackground([this] { _dataFile1->didReadAllFiles(); });
    }
    if (hasher2)
        _digests2 = buildDigests(*hasher2, nullptr);
    if (!_digests1 || !_digests2)
        return;
    _unreadableCount1 = _dataFile1->fileCount() - _digests1->size();
    _unreadableCount2 = _dataFile2->fileCount() - _digests2->size();
    compareDigests();
    if (_dataFile1->type() != WQDataFile::cell)
        return;
    _landBlocksAdded.emplace(*_fileKeysAdded);
    _landBlocksRemoved.emplace(*_fileKeysRemoved);
    _landBlocksChanged.emplace(*_fileKeysChanged);
}

void WQDataFileComparison::compareDigests() {
    FileKeys &added = _fileKeysAdded.emplace();
    FileKeys &removed = _fileKeysRemoved.emplace();
    FileKeys &changed = _fileKeysChanged.emplace();
    const auto note = [this](FileKeys &keys, std::uint32_t identifier) {
        if (!isLeftOut(identifier))
            keys.push_back(identifier);
    };
    auto file1 = _digests1->begin();
    auto file2 = _digests2->begin();
    while (file1 != _digests1->end() || file2 != _digests2->end()) {
        if (file1 == _digests1->end() ||
            (file2 != _digests2->end() && file2->identifier < file1->identifier)) {
            note(added, (file2++)->identifier);
        } else if (file2 == _digests2->end() || file1->identifier < file2->identifier) {
            note(removed, (file1++)->identifier);
        } else {
            if (file1->digest != file2->digest)
                note(changed, file1->identifier);
            ++file1;
            ++file2;
        }
    }
}

/// Of a file that differs, or that only one archive has a digest of.
bool WQDataFileComparison::isLeftOut(std::uint32_t identifier) {
    if (!_leavesOutUnreadable)
        return false;
    const auto isUnreadableIn = [=](const WQDataFile &dataFile, const WQFileDigestMap &digests) {
        return dataFile.mayHaveLost(identifier) ||
               (dataFile.fileEntriesByIdentifier().find(identifier) != nullptr &&
                !digests.contains(identifier));
    };
    const bool isLeftOut = isUnreadableIn(*_dataFile1, *_digests1) ||
                           isUnreadableIn(*_dataFile2, *_digests2) ||
                           (_isDoubtful && _isDoubtful(identifier));
    _leftOutCount += isLeftOut;
    return isLeftOut;
}

WQFileDigestMap WQDataFileComparison::buildSHA1DigestsByIDForDataFile(WQDataFile &dataFile) const {
    WQFileHasher hasher(dataFile);
    return buildDigests(hasher, nullptr);
}

WQFileDigestMap WQDataFileComparison::buildDigests(WQFileHasher &hasher,
                                                   WQFileHasher *newer) const {
    static constexpr char kName[] = "-[WQDataFileComparison buildSHA1DigestsByIDForDataFile:]";
    ZPLog("[%p]  > %s", static_cast<const void *>(this), kName);
    hasher.hashFiles(newer);
    ZPLog("[%p] <  %s", static_cast<const void *>(this), kName);
    return hasher.takeDigests();
}

// -- reports

bool WQDataFileComparison::saveFile1DigestsToURL(const std::filesystem::path &path,
                                                 ZPError *error) const {
    return saveDigests(_digests1, path, error);
}

bool WQDataFileComparison::saveFile2DigestsToURL(const std::filesystem::path &path,
                                                 ZPError *error) const {
    return saveDigests(_digests2, path, error);
}

bool WQDataFileComparison::saveSummaryToURL(const std::filesystem::path *path,
                                            ZPError *error) const {
    const FileKeys added = _fileKeysAdded.value_or(FileKeys());
    const FileKeys removed = _fileKeysRemoved.value_or(FileKeys());
    const FileKeys changed = _fileKeysChanged.value_or(FileKeys());
    std::string text = summaryHead(added.size(), removed.size(), changed.size());
    const auto appendFiles = [&text](const char *title, const FileKeys &keys) {
        appendTitle(text, title);
        for (const std::uint32_t key : keys)
            text += ZPFormat("%08x\n", key);
    };
    appendFiles("Added files", added);
    appendFiles("Removed files", removed);
    appendFiles("Changed files", changed);
    return saveText(text, path, error);
}

bool WQDataFileComparison::saveLandBlockSummaryToURL(const std::filesystem::path *path,
                                                     ZPError *error) const {
    const WQLandBlockSet added = _landBlocksAdded.value_or(WQLandBlockSet());
    const WQLandBlockSet removed = _landBlocksRemoved.value_or(WQLandBlockSet());
    const WQLandBlockSet changed = _landBlocksChanged.value_or(WQLandBlockSet());
    std::string text = summaryHead(added.size(), removed.size(), changed.size());
    appendTitle(text, "Added land blocks");
    _appendLandBlocks(added.numbers(), text);
    appendTitle(text, "Removed land blocks");
    _appendLandBlocks(removed.numbers(), text);
    appendTitle(text, "Changed land blocks");
    _appendLandBlocks(changed.numbers(), text);
    return saveText(text, path, error);
}

void WQDataFileComparison::_appendLandBlocks(std::span<const std::uint32_t> landBlocks,
                                             std::string &toString) {
    const WQKnownDungeonDictionary &names = WQKnownDungeonNames();
    for (const std::uint32_t number : landBlocks) {
        const std::string place =
            WQStringFromMapCoordinate(WQMapCoordinateForCellID(WQIdentifierOfCell(number, 0)));
        if (const auto name = names.find(number); name != names.end())
            toString += ZPFormat("%04x  %s -- %.*s\n", number, place.c_str(),
                                 static_cast<int>(name->second.size()), name->second.data());
        else
            toString += ZPFormat("%04x  %s\n", number, place.c_str());
    }
}
