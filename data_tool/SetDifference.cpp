#include "data_tool/SetDifference.h"

#include "data_tool/Progress.h"
#include "io/ZPParallel.h"
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

class Worker {
  public:
    /// Leaves a pair of equal files without either; a file that cannot be read is dropped.
    void compare(FileChange &pair, const Archive *before, const Archive *after) {
        const auto old = read(pair.before, before, _oldScratch);
        const auto now = read(pair.after, after, _newScratch);
        if (old && now && old->size() == now->size() &&
            (old->empty() || std::memcmp(old->data(), now->data(), old->size()) == 0))
            pair.before = pair.after = nullptr;
    }

    std::vector<std::pair<std::uint32_t, std::string>> faults;

  private:
    std::optional<std::span<const std::byte>> read(const ZPGorvaneFileEntry *&entry,
                                                   const Archive *archive, ZPData &scratch) {
        if (entry == nullptr)
            return std::nullopt;
        ZPError error;
        const auto bytes = archive->dataFile->readBytesForFileEntry(*entry, scratch, &error);
        if (!bytes) {
            faults.emplace_back(entry->identifier,
                                ZPFormat("%s: %08x: %s", archive->dataFile->path().c_str(),
                                         entry->identifier, error.failureReason().c_str()));
            entry = nullptr;
        }
        return bytes;
    }

    ZPData _oldScratch, _newScratch;
};

} // namespace

ArchiveDifference compareArchives(const Archive *before, const Archive *after,
                                  const FileSelection &selection) {
    constexpr std::size_t kPairsPerTask = 1024, kAhead = 8;
    Pairs pairs = pairsOf(before, after, selection);
    ZPThreadValues<Worker> workers;
    {
        Progress progress("comparing", pairs.size());
        ZPParallelRanges(pairs.size(), kPairsPerTask, [&](std::size_t first, std::size_t end) {
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
    std::erase_if(pairs, [](const FileChange &pair) {
        return pair.before == nullptr && pair.after == nullptr;
    });
    ArchiveDifference difference{std::move(pairs), {}};
    std::vector<std::pair<std::uint32_t, std::string>> faults;
    workers.forEach([&faults](Worker &worker) {
        std::ranges::move(worker.faults, std::back_inserter(faults));
    });
    std::ranges::sort(faults);
    for (auto &[identifier, text] : faults)
        difference.faults.push_back(std::move(text));
    return difference;
}
