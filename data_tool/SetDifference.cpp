#include "data_tool/SetDifference.h"

#include "data_tool/Progress.h"
#include "io/ZPParallelLog.h"
#include "io/ZPSystemLog.h"
#include "io/ZPThreadValues.h"

#include <algorithm>
#include <cstring>

namespace {

using Pairs = std::vector<FileChange>;

/// The selected files of both archives by identifier, the same ones beside each other.
Pairs pairsOf(const Archive *before, const Archive *after, const FileSelection &selection) {
    static const ZPGorvaneFileEntryMap kNothing;
    const ZPGorvaneFileEntryMap &older = before != nullptr ? before->entries() : kNothing;
    const ZPGorvaneFileEntryMap &newer = after != nullptr ? after->entries() : kNothing;
    Pairs pairs;
    pairs.reserve(std::max(older.size(), newer.size()));
    const auto *old = older.begin(), *now = newer.begin();
    while (old != older.end() || now != newer.end()) {
        const bool takesOld =
            old != older.end() && (now == newer.end() || old->identifier <= now->identifier);
        const bool takesNow =
            now != newer.end() && (old == older.end() || now->identifier <= old->identifier);
        const FileChange pair{takesOld ? old->identifier : now->identifier,
                              takesOld ? old : nullptr, takesNow ? now : nullptr};
        old += takesOld;
        now += takesNow;
        if ((takesOld && selection.includes(*before, *pair.before)) ||
            (takesNow && selection.includes(*after, *pair.after)))
            pairs.push_back(pair);
    }
    return pairs;
}

using Faults = std::vector<std::pair<std::uint32_t, std::string>>;

std::string faultText(const Archive &archive, std::uint32_t identifier, const std::string &cause) {
    return ZPFormat("%s: %08x: %s", archive.dataFile->path().c_str(), identifier, cause.c_str());
}

class Worker {
  public:
    /// Leaves a pair of equal files without either, and one of which a file cannot be read.
    void compare(FileChange &pair, const Archive *before, const Archive *after) {
        const auto old = read(pair.before, before, _oldScratch);
        const auto now = read(pair.after, after, _newScratch);
        const bool isRead = old.has_value() == (pair.before != nullptr) &&
                            now.has_value() == (pair.after != nullptr);
        const bool isEqual =
            old && now && old->size() == now->size() &&
            (old->empty() || std::memcmp(old->data(), now->data(), old->size()) == 0);
        if (isEqual || !isRead)
            pair.before = pair.after = nullptr;
    }

    Faults faults;

  private:
    std::optional<std::span<const std::byte>> read(const ZPGorvaneFileEntry *entry,
                                                   const Archive *archive, ZPData &scratch) {
        if (entry == nullptr)
            return std::nullopt;
        ZPError error;
        const auto bytes = archive->dataFile->readBytesForFileEntry(*entry, scratch, &error);
        if (!bytes)
            faults.emplace_back(entry->identifier,
                                faultText(*archive, entry->identifier, error.failureReason()));
        return bytes;
    }

    ZPData _oldScratch, _newScratch;
};

/// Why a file that seems to differ says nothing about a change; empty where it does.
std::string doubtAbout(const FileChange &pair, const ZPGorvaneFileEntry *entry,
                       const Archive *archive) {
    if (archive == nullptr)
        return {};
    if (entry == nullptr)
        return archive->dataFile->mayHaveLost(pair.identifier)
                   ? faultText(*archive, pair.identifier,
                               "it may be lost, since the directory is damaged")
                   : std::string();
    const std::string *cause = archive->damage->causeOf(pair.identifier);
    return cause != nullptr ? faultText(*archive, pair.identifier, *cause) : std::string();
}

} // namespace

ArchiveDifference compareArchives(const Archive *before, const Archive *after,
                                  const FileSelection &selection) {
    constexpr std::size_t kPairsPerTask = 1024, kAhead = 8;
    Pairs pairs = pairsOf(before, after, selection);
    ZPThreadValues<Worker> workers;
    {
        Progress progress("comparing", pairs.size());
        ZPParallelRangesWithLog(pairs.size(), kPairsPerTask,
                                [&](std::size_t first, std::size_t end) {
                                    Worker &worker = workers.local();
                                    for (std::size_t at = first; at < end; ++at) {
                                        if (at + kAhead < pairs.size()) {
                                            const FileChange &next = pairs[at + kAhead];
                                            if (next.before != nullptr)
                                                before->dataFile->prefetchFileEntry(*next.before);
                                            if (next.after != nullptr)
                                                after->dataFile->prefetchFileEntry(*next.after);
                                        }
                                        worker.compare(pairs[at], before, after);
                                    }
                                    progress.add(end - first);
                                });
    }
    Faults faults;
    std::erase_if(pairs, [&](const FileChange &pair) {
        if (pair.before == nullptr && pair.after == nullptr)
            return true;
        std::string doubt = doubtAbout(pair, pair.before, before);
        if (doubt.empty())
            doubt = doubtAbout(pair, pair.after, after);
        if (!doubt.empty())
            faults.emplace_back(pair.identifier, doubt);
        return !doubt.empty();
    });
    ArchiveDifference difference{std::move(pairs), {}};
    workers.forEach([&faults](Worker &worker) {
        std::ranges::move(worker.faults, std::back_inserter(faults));
    });
    std::ranges::sort(faults);
    for (auto &[identifier, text] : faults)
        difference.faults.push_back(std::move(text));
    return difference;
}
