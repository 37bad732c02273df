#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "data_tool/RecordCheck.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <map>

namespace {

struct Options {
    std::string path;
    std::string format = "text";
    FileSelection selection;
};

class Report {
  public:
    explicit Report(const std::string &format) : _isTSV(format == "tsv"), _usesColor(usesColor()) {
        if (_isTSV)
            _output.write("identifier\tarchive\tseverity\tkind\toffset\tcause\n");
    }

    void add(const Archive &archive, const ZPGorvaneFinding &finding) {
        const bool isError = finding.severity == ZPGorvaneFinding::Severity::error;
        const char *severity = isError ? "error" : "warning";
        ++_counts[{severity, finding.kind}];
        if (_isTSV)
            writeTSV(archive, finding, severity);
        else
            writeText(archive, finding, severity, isError ? "\x1b[31m" : "\x1b[33m");
    }

    /// The exit status. The summary is for people; a table has none.
    int finish(std::size_t fileCount) {
        if (!_isTSV) {
            for (const auto &[key, count] : _counts)
                _output.format("%8zu %s: %s\n", count, key.first.c_str(), key.second.c_str());
            _output.format("%zu files checked, %s\n", fileCount,
                           _counts.empty() ? "nothing found" : "see above");
        }
        _output.flush();
        return _counts.empty() ? kFine : kFoundOrFailed;
    }

  private:
    void writeText(const Archive &archive, const ZPGorvaneFinding &finding, const char *severity,
                   const char *color) {
        const std::string file =
            finding.identifier ? ZPFormat(" %08x", *finding.identifier) : std::string();
        _output.writeRaw(_usesColor ? color : "");
        _output.write(severity);
        _output.writeRaw(_usesColor ? "\x1b[0m" : "");
        _output.format(": %s%s at %08llx: %s: %s\n", ZPEscapedText(archive.fileName()).c_str(),
                       file.c_str(), static_cast<unsigned long long>(finding.offset), finding.kind,
                       ZPEscapedText(finding.cause).c_str());
    }

    void writeTSV(const Archive &archive, const ZPGorvaneFinding &finding, const char *severity) {
        std::string line;
        if (finding.identifier)
            appendIdentifier(line, *finding.identifier);
        line += ZPFormat("\t%s\t%s\t%s\t0x%08llx\t", archive.name.c_str(), severity, finding.kind,
                         static_cast<unsigned long long>(finding.offset));
        _output.write(line + ZPEscapedText(finding.cause) + "\n");
    }

    const bool _isTSV, _usesColor;
    Output _output;
    std::map<std::pair<std::string, std::string>, std::size_t> _counts;
};

int check(Options &options, const GlobalOptions &global) {
    const WQDecoderSet decoders = loadDecoders(global);
    options.selection.prepare(decoders);
    const DataSet dataSet = openDataSet(options.path, global.family());
    Report report(options.format);
    std::size_t fileCount = 0;
    for (const Archive &archive : dataSet.archives) {
        const auto concernsSelection = [&](const ZPGorvaneFinding &finding) {
            if (!options.selection.isRestricted())
                return true;
            const auto *entry =
                finding.identifier ? archive.entries().find(*finding.identifier) : nullptr;
            return entry != nullptr && options.selection.includes(archive, *entry);
        };
        for (const ZPGorvaneFinding &finding : archive.damage->findings())
            if (concernsSelection(finding))
                report.add(archive, finding);
        for (const ZPGorvaneFinding &finding :
             checkRecords(dataSet, archive, decoders, options.selection))
            report.add(archive, finding);
        for (const ZPGorvaneFileEntry &entry : archive.entries())
            fileCount += options.selection.includes(archive, entry);
    }
    int status = report.finish(fileCount);
    if (!options.selection.sayWhatIsNotThere(dataSet) || !dataSet.isWhole)
        status = kFoundOrFailed;
    // What is wrong with directories was left out of the report.
    if (options.selection.isRestricted() && !sayWhatMayBeMissing(dataSet))
        status = kFoundOrFailed;
    return status;
}

} // namespace

CommandAction addCheckCommand(CLI::App &command) {
    const auto options = std::make_shared<Options>();
    command.add_option("path", options->path, "Data directory or archive")->required();
    command.add_option("--format", options->format, "text or tsv")
        ->check(CLI::IsMember({"text", "tsv"}));
    options->selection.addOptions(command);
    return [options](const GlobalOptions &global) { return check(*options, global); };
}
