#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "data_tool/FileSelection.h"
#include "data_tool/RecordReader.h"
#include "data_tool/SetDifference.h"
#include "decode/ZPRecordTreeDifference.h"
#include "game/WQDataFileComparison.h"
#include "io/ZPSHA1.h"
#include "io/ZPSystemLog.h"

#include <algorithm>
#include <cerrno>

namespace {

struct Options {
    std::string oldPath, newPath;
    std::string format = "text";
    bool withDigests = false, withRecords = false, asLand = false;
    FileSelection selection;
};

class DifferenceWriter {
  public:
    DifferenceWriter(const Options &options, const DataSet &before, const DataSet &after,
                     const WQDecoderSet &decoders)
        : _options(options), _isTSV(options.format == "tsv"), _decoders(decoders),
          _oldReader(before, decoders), _newReader(after, decoders) {
        if (!_isTSV)
            return;
        std::string header = "identifier\tarchive\tchange\tclass\told\tnew";
        header += options.withDigests ? "\told-sha1\tnew-sha1" : "";
        header += options.withRecords ? "\tfield\n" : "\n";
        _output.write(header);
    }

    void write(const Archive *before, const Archive *after) {
        const ArchiveDifference difference = compareArchives(before, after, _options.selection);
        for (const std::string &fault : difference.faults)
            if (++_faultCount <= kMostFaults)
                say(fault);
        for (const FileChange &change : difference.changes)
            writeChange(change, before, after);
    }

    /// The exit status.
    int finish() {
        if (!_isTSV)
            _output.format("added: %zu, removed: %zu, changed: %zu\n", _added, _removed, _changed);
        _output.flush();
        if (_faultCount > 0)
            say(ZPFormat("%zu files could not be compared%s; `plotterra-data check` says why",
                         _faultCount, _faultCount > kMostFaults ? ", those above among them" : ""));
        return _failed || _faultCount > 0 || _added + _removed + _changed > 0 ? kFoundOrFailed
                                                                              : kFine;
    }

  private:
    void writeChange(const FileChange &change, const Archive *before, const Archive *after) {
        const bool isAdded = change.before == nullptr, isRemoved = change.after == nullptr;
        ++(isAdded ? _added : isRemoved ? _removed : _changed);
        const char *name = isAdded ? "added" : isRemoved ? "removed" : "changed";
        const Archive &archive = isRemoved ? *before : *after;
        const std::string className(_decoders.nameOf(archive.kindOf(change.identifier)));
        const auto sizeOf = [](const ZPGorvaneFileEntry *entry) {
            return entry != nullptr ? std::to_string(entry->fileSize) : std::string();
        };
        const std::string oldSize = sizeOf(change.before), newSize = sizeOf(change.after);
        std::string line;
        if (_isTSV) {
            line = lineOf({archive.name, name, className, oldSize, newSize}, change.identifier);
        } else {
            line = ZPFormat("%-8s", name);
            appendIdentifier(line, change.identifier);
            line +=
                ZPFormat(" %-24s %10s %10s %s", className.c_str(), isAdded ? "-" : oldSize.c_str(),
                         isRemoved ? "-" : newSize.c_str(), archive.name.c_str());
        }
        if (_options.withDigests)
            for (const auto &[entry, from] :
                 {std::pair{change.before, before}, std::pair{change.after, after}}) {
                const std::string digest = digestOf(entry, from);
                line += _isTSV ? '\t' : ' ';
                line += _isTSV || !digest.empty() ? digest : "-";
            }
        line += _isTSV && _options.withRecords ? "\t\n" : "\n";
        _output.write(line);
        if (_options.withRecords && !isAdded && !isRemoved)
            writeRecordChanges(change, *before, *after, className);
    }

    /// Of a table: the identifier, and what follows.
    static std::string lineOf(std::initializer_list<std::string_view> fields,
                              std::uint32_t identifier) {
        std::string line;
        appendIdentifier(line, identifier);
        for (const std::string_view field : fields)
            line.append("\t").append(field);
        return line;
    }

    static std::string digestOf(const ZPGorvaneFileEntry *entry, const Archive *archive) {
        ZPData scratch;
        const auto bytes = entry != nullptr
                               ? archive->dataFile->readBytesForFileEntry(*entry, scratch)
                               : std::nullopt;
        return bytes ? ZPSHA1DigestString(*bytes) : std::string();
    }

    void writeRecordChanges(const FileChange &change, const Archive &before, const Archive &after,
                            const std::string &className) {
        ZPData oldScratch, newScratch;
        const auto oldBytes = before.dataFile->readBytesForFileEntry(*change.before, oldScratch);
        const auto newBytes = after.dataFile->readBytesForFileEntry(*change.after, newScratch);
        if (!oldBytes || !newBytes)
            return;
        const auto oldResult = _oldReader.decode(before, change.identifier, *oldBytes);
        const auto newResult = _newReader.decode(after, change.identifier, *newBytes);
        if (!oldResult || !newResult)
            return;
        for (const auto *result : {&*oldResult, &*newResult})
            if (result->fault) {
                say(ZPFormat("%08x: %s", change.identifier, faultText(*result).c_str()));
                _failed = true;
                return;
            }
        for (const ZPRecordChange &field :
             ZPRecordTreeDifference(_oldReader.tree(), _newReader.tree()))
            if (_isTSV)
                _output.write(lineOf({after.name, "field", className, field.before, field.after,
                                      _options.withDigests ? "\t\t" + field.path : field.path},
                                     change.identifier) +
                              "\n");
            else
                _output.format("    %s: %s => %s\n", field.path.c_str(), textOrNone(field.before),
                               textOrNone(field.after));
    }

    static const char *textOrNone(const std::string &text) {
        return text.empty() ? "(none)" : text.c_str();
    }

    static constexpr std::size_t kMostFaults = 20;

    const Options &_options;
    const bool _isTSV;
    const WQDecoderSet &_decoders;
    RecordReader _oldReader, _newReader;
    Output _output;
    std::size_t _added = 0, _removed = 0, _changed = 0;
    std::size_t _faultCount = 0;
    bool _failed = false;
};

/// The archives of two sets that belong together: by name, or the only ones.
std::vector<std::pair<const Archive *, const Archive *>> pairsOf(const DataSet &before,
                                                                 const DataSet &after) {
    if (!before.isDirectory && !after.isDirectory)
        return {{&before.archives.front(), &after.archives.front()}};
    if (before.isDirectory != after.isDirectory)
        throw CommandFailure("one is a directory and the other an archive", kUsageError);
    std::vector<std::pair<const Archive *, const Archive *>> pairs;
    for (const Archive &archive : before.archives)
        pairs.emplace_back(&archive, after.archiveWithName(archive.name));
    for (const Archive &archive : after.archives)
        if (before.archiveWithName(archive.name) == nullptr)
            pairs.emplace_back(nullptr, &archive);
    return pairs;
}

int writeLandBlocks(const DataSet &before, const DataSet &after) {
    WQDataFileComparison comparison(&before.cellDataFile(), &after.cellDataFile());
    const auto damageOf = [](const DataSet &dataSet) {
        return std::ranges::find(dataSet.archives, &dataSet.cellDataFile(),
                                 [](const Archive &archive) { return archive.dataFile.get(); })
            ->damage.get();
    };
    comparison.leaveOutUnreadableFiles(
        [older = damageOf(before), newer = damageOf(after)](std::uint32_t identifier) {
            return older->causeOf(identifier) != nullptr || newer->causeOf(identifier) != nullptr;
        });
    comparison.buildComparison();
    // Whoever reads it may go away.
    if (ZPError error;
        !comparison.saveLandBlockSummaryToURL(nullptr, &error) && error.code != EPIPE)
        throw CommandFailure("cannot write to standard output: " + error.failureReason());
    if (const std::size_t count = comparison.leftOutCount(); count > 0)
        say(ZPFormat("%zu files could not be compared; `plotterra-data check` says why", count));
    return comparison.leftOutCount() == 0 && comparison.fileKeysAdded()->empty() &&
                   comparison.fileKeysRemoved()->empty() && comparison.fileKeysChanged()->empty()
               ? kFine
               : kFoundOrFailed;
}

int diff(Options &options, const GlobalOptions &global) {
    const WQDecoderSet decoders = loadDecoders(global);
    options.selection.prepare(decoders);
    if (options.asLand && options.selection.isRestricted())
        throw CommandFailure("--land is of all land blocks and takes no selection", kUsageError);
    const DataSet before = global.openDataSet(options.oldPath);
    const DataSet after = global.openDataSet(options.newPath);
    int status;
    if (options.asLand) {
        status = writeLandBlocks(before, after);
    } else {
        DifferenceWriter writer(options, before, after, decoders);
        for (const auto &[old, now] : pairsOf(before, after))
            writer.write(old, now);
        status = writer.finish();
    }
    return statusOver(before, statusOver(after, status));
}

} // namespace

CommandAction addDiffCommand(CLI::App &command) {
    const auto options = std::make_shared<Options>();
    command.add_option("old", options->oldPath, "Older data directory or archive")->required();
    command.add_option("new", options->newPath, "Newer data directory or archive")->required();
    auto *format = command.add_option("--format", options->format, "text or tsv")
                       ->check(CLI::IsMember({"text", "tsv"}));
    auto *digests =
        command.add_flag("--digests", options->withDigests, "With the SHA-1 of each file");
    auto *records = command.add_flag("--records", options->withRecords,
                                     "With the fields that changed, of records with a decoder");
    command.add_flag("--land", options->asLand, "Land blocks instead of files, for cell archives")
        ->excludes(records)
        ->excludes(digests)
        ->excludes(format);
    options->selection.addOptions(command);
    return [options](const GlobalOptions &global) { return diff(*options, global); };
}
