#include "data_tool/RecordCheck.h"

#include "data_tool/Progress.h"
#include "data_tool/RecordReader.h"
#include "game/WQRecordClass.h"
#include "io/ZPParallelLog.h"
#include "io/ZPSystemLog.h"
#include "io/ZPThreadValues.h"

#include <algorithm>

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
            add(result->fault ? ZPGorvaneFinding::Severity::error
                              : ZPGorvaneFinding::Severity::warning,
                kZPGorvaneRecordFinding, entry, fault);
        if (std::string fault = _reader.faultInContents(_archive, entry.identifier, *bytes);
            !fault.empty())
            add(ZPGorvaneFinding::Severity::error, kZPGorvaneRecordFinding, entry,
                std::move(fault));
        const ZPRecordTree &tree = _reader.tree();
        for (std::uint32_t place = 0; place < tree.size(); place = tree[place].end)
            if (tree[place].kind == ZPRecordValueKind::identifier)
                return compareIdentifier(entry, tree[place].number);
    }

    ZPGorvaneFindings takeFindings() { return std::move(_findings); }

  private:
    /// Records of most classes begin with their identifier, whoever knows what follows.
    void checkUndecoded(const ZPGorvaneFileEntry &entry, std::span<const std::byte> bytes) {
        if (_archive.kindOf(entry.identifier).className.empty())
            return;
        ZPDataCursor cursor(bytes);
        if (bytes.size() >= sizeof(std::uint32_t))
            compareIdentifier(entry, cursor.readLittleInt32());
        else
            add(ZPGorvaneFinding::Severity::error, kZPGorvaneRecordFinding, entry,
                ZPFormat("%zu bytes are too few for an identifier", bytes.size()));
    }

    void compareIdentifier(const ZPGorvaneFileEntry &entry, std::uint64_t stored) {
        if (stored != entry.identifier)
            add(ZPGorvaneFinding::Severity::error, kZPGorvaneIdentifierFinding, entry,
                ZPFormat("Identifier stored in file (%08x) doesn't match its directory entry",
                         static_cast<unsigned>(stored)));
    }

    void add(ZPGorvaneFinding::Severity severity, const char *kind, const ZPGorvaneFileEntry &entry,
             std::string cause) {
        _findings.push_back({severity, kind, entry.identifier, entry.fileOffset, std::move(cause),
                             _archive.dataFile->path().string()});
    }

    const Archive &_archive;
    RecordReader _reader;
    ZPData _scratch;
    ZPGorvaneFindings _findings;
};

} // namespace

ZPGorvaneFindings checkRecords(const DataSet &dataSet, const Archive &archive,
                               const WQDecoderSet &decoders, const FileSelection &selection) {
    constexpr std::size_t kEntriesPerTask = 1024, kAhead = 8;
    const ZPGorvaneFileEntryMap &entries = archive.entries();
    ZPThreadValues<Worker> workers([&] { return Worker(dataSet, archive, decoders); });
    {
        Progress progress("decoding", entries.size());
        ZPParallelRangesWithLog(
            entries.size(), kEntriesPerTask, [&](std::size_t first, std::size_t end) {
                Worker &worker = workers.local();
                for (std::size_t at = first; at < end; ++at) {
                    if (at + kAhead < entries.size())
                        archive.dataFile->prefetchFileEntry(entries[at + kAhead]);
                    if (selection.includes(archive, entries[at]))
                        worker.check(entries[at]);
                }
                progress.add(end - first);
            });
    }
    ZPGorvaneFindings findings;
    workers.forEach([&findings](Worker &worker) {
        std::ranges::move(worker.takeFindings(), std::back_inserter(findings));
    });
    std::ranges::stable_sort(findings, {}, &ZPGorvaneFinding::identifier);
    return findings;
}
