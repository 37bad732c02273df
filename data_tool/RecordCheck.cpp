#include "data_tool/RecordCheck.h"

#include "data_tool/Progress.h"
#include "data_tool/RecordReader.h"
#include "game/WQRecordClass.h"
#include "io/ZPSystemLog.h"

#include <algorithm>
#include <tbb/blocked_range.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

namespace {

class Worker {
  public:
    Worker(const DataSet &dataSet, const Archive &archive, const WQDecoderSet &decoders)
        : _archive(archive), _reader(dataSet, decoders) {}

    void check(const ZPGorvaneFileEntry &entry) {
        const auto bytes = _archive.dataFile->readBytesForFileEntry(entry, _scratch);
        if (!bytes)
            return;
        const auto result = _reader.decode(_archive, entry.identifier, *bytes);
        if (!result)
            return checkUndecoded(entry, *bytes);
        if (const std::string fault = faultText(*result); !fault.empty())
            add(result->fault ? Finding::Severity::error : Finding::Severity::warning,
                kRecordFinding, entry, fault);
        const ZPRecordTree &tree = _reader.tree();
        for (std::uint32_t place = 0; place < tree.size(); place = tree[place].end)
            if (tree[place].kind == ZPRecordValueKind::identifier)
                return compareIdentifier(entry, tree[place].number);
    }

    Findings takeFindings() { return std::move(_findings); }

  private:
    /// Records of most classes begin with their identifier, whoever knows what follows.
    void checkUndecoded(const ZPGorvaneFileEntry &entry, std::span<const std::byte> bytes) {
        if (_archive.kindOf(entry.identifier).className.empty())
            return;
        ZPDataCursor cursor(bytes);
        if (bytes.size() >= sizeof(std::uint32_t))
            compareIdentifier(entry, cursor.readLittleInt32());
        else
            add(Finding::Severity::error, kRecordFinding, entry,
                ZPFormat("%zu bytes are too few for an identifier", bytes.size()));
    }

    void compareIdentifier(const ZPGorvaneFileEntry &entry, std::uint64_t stored) {
        if (stored != entry.identifier)
            add(Finding::Severity::error, kIdentifierFinding, entry,
                ZPFormat("Identifier stored in file (%08x) doesn't match its directory entry",
                         static_cast<unsigned>(stored)));
    }

    void add(Finding::Severity severity, const char *kind, const ZPGorvaneFileEntry &entry,
             std::string cause) {
        _findings.push_back({severity, kind, entry.identifier, entry.fileOffset, std::move(cause)});
    }

    const Archive &_archive;
    RecordReader _reader;
    ZPData _scratch;
    Findings _findings;
};

} // namespace

Findings checkRecords(const DataSet &dataSet, const Archive &archive, const WQDecoderSet &decoders,
                      const FileSelection &selection) {
    constexpr std::size_t kEntriesPerTask = 1024, kAhead = 8;
    const ZPGorvaneFileEntryMap &entries = archive.entries();
    tbb::enumerable_thread_specific<Worker> workers(
        [&] { return Worker(dataSet, archive, decoders); });
    {
        Progress progress("decoding", entries.size());
        tbb::parallel_for(tbb::blocked_range<std::size_t>(0, entries.size(), kEntriesPerTask),
                          [&](const auto &range) {
                              Worker &worker = workers.local();
                              for (std::size_t at = range.begin(); at < range.end(); ++at) {
                                  if (at + kAhead < entries.size())
                                      archive.dataFile->prefetchFileEntry(entries[at + kAhead]);
                                  if (selection.includes(archive, entries[at]))
                                      worker.check(entries[at]);
                              }
                              progress.add(range.size());
                          });
    }
    Findings findings;
    for (Worker &worker : workers)
        std::ranges::move(worker.takeFindings(), std::back_inserter(findings));
    std::ranges::stable_sort(findings, {}, &Finding::identifier);
    return findings;
}
