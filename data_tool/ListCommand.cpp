#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "data_tool/FileSelection.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace {

struct Row {
    const Archive *archive;
    const ZPGorvaneFileEntry *entry;
};

struct Options {
    std::string path;
    std::string format = "text";
    std::vector<std::string> sortKeys;
    FileSelection selection;
};

class FileList {
  public:
    FileList(const DataSet &dataSet, const WQDecoderSet &decoders)
        : _dataSet(dataSet), _decoders(decoders) {}

    void writeText(const Row &row) {
        const ZPGorvaneFileEntry &entry = *row.entry;
        std::string &line = _output.buffer();
        appendIdentifier(line, entry.identifier);
        const std::string name(_decoders.nameOf(row.archive->kindOf(entry.identifier)));
        line += ' ';
        line += name;
        line.append(name.size() < kClassWidth ? kClassWidth - name.size() : 0, ' ');
        appendPadded(line, std::to_string(entry.fileSize), 11);
        line += ' ';
        if (row.archive->family->hasDates) {
            appendDate(line, entry.mtime);
            line += ' ';
        }
        if (row.archive->family->hasVersions)
            line += ZPFormat("%08x ", entry.version);
        appendIdentifier(line, entry.fileOffset);
        if (_dataSet.archives.size() > 1)
            line.append(" ").append(ZPEscapedText(row.archive->name));
        line += '\n';
        _output.write({});
    }

    void writeTSVHeader() {
        _output.write("identifier\tarchive\ttype\tclass\tsize\tdate\tversion\toffset\n");
    }
    void writeTSV(const Row &row) {
        const ZPGorvaneFileEntry &entry = *row.entry;
        std::string &line = _output.buffer();
        appendIdentifier(line, entry.identifier);
        line += '\t';
        line += row.archive->name;
        line += '\t';
        const WQRecordKind kind = row.archive->kindOf(entry.identifier);
        if (kind.type) {
            line += "0x";
            line += kDigits[*kind.type >> 4];
            line += kDigits[*kind.type & 0xF];
        }
        line += '\t';
        line += _decoders.nameOf(kind);
        line += '\t';
        appendNumber(line, entry.fileSize);
        line += '\t';
        if (row.archive->family->hasDates)
            appendDate(line, entry.mtime);
        line += '\t';
        if (row.archive->family->hasVersions)
            appendIdentifier(line, entry.version);
        line += '\t';
        appendIdentifier(line, entry.fileOffset);
        line += '\n';
        _output.write({});
    }

    void writeJSON(const Row &row) {
        const ZPGorvaneFileEntry &entry = *row.entry;
        _json.Clear();
        rapidjson::Writer<rapidjson::StringBuffer> writer(_json);
        const auto writeText = [&](const char *key, std::string_view text) {
            writer.Key(key);
            writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        };
        const auto writeIdentifier = [&](const char *key, std::uint32_t word) {
            _text.clear();
            appendIdentifier(_text, word);
            writeText(key, _text);
        };
        writer.StartObject();
        writeIdentifier("identifier", entry.identifier);
        writeText("archive", row.archive->name);
        const WQRecordKind kind = row.archive->kindOf(entry.identifier);
        if (kind.type)
            writeText("type", ZPFormat("0x%02x", *kind.type));
        if (const std::string_view name = _decoders.nameOf(kind); !name.empty())
            writeText("class", name);
        writer.Key("size");
        writer.Uint(entry.fileSize);
        if (row.archive->family->hasDates) {
            _text.clear();
            appendDate(_text, entry.mtime);
            writeText("date", _text);
        }
        if (row.archive->family->hasVersions)
            writeIdentifier("version", entry.version);
        writeIdentifier("offset", entry.fileOffset);
        writer.EndObject();
        const std::string_view json(_json.GetString(), _json.GetSize());
        _output.write(ZPIsPlainText(json) ? json : ZPPrintableJSON(json));
        _output.write("\n");
    }

    void finish() { _output.flush(); }

  private:
    static constexpr std::size_t kClassWidth = 24;
    static constexpr char kDigits[] = "0123456789abcdef";

    const DataSet &_dataSet;
    const WQDecoderSet &_decoders;
    Output _output;
    rapidjson::StringBuffer _json;
    std::string _text;
};

/// A minus before a key turns its order round.
void sortRows(std::vector<Row> &rows, const std::vector<std::string> &keys) {
    const auto valueOf = [](const Row &row, std::string_view key) {
        return key == "size"   ? row.entry->fileSize
               : key == "date" ? row.entry->mtime
                               : row.entry->identifier;
    };
    std::ranges::stable_sort(rows, [&](const Row &a, const Row &b) {
        for (const std::string &key : keys) {
            const bool isDescending = key.starts_with('-');
            const std::string_view name = std::string_view(key).substr(isDescending ? 1 : 0);
            if (const auto first = valueOf(a, name), second = valueOf(b, name); first != second)
                return (first < second) != isDescending;
        }
        return false;
    });
}

int list(Options &options, const GlobalOptions &global) {
    const WQDecoderSet decoders = loadDecoders(global);
    options.selection.prepare(decoders);
    const DataSet dataSet = global.openDataSet(options.path);
    FileList list(dataSet, decoders);
    const auto write = options.format == "tsv"    ? &FileList::writeTSV
                       : options.format == "json" ? &FileList::writeJSON
                                                  : &FileList::writeText;
    if (options.format == "tsv")
        list.writeTSVHeader();
    std::vector<Row> rows;
    for (const Archive &archive : dataSet.archives)
        for (const ZPGorvaneFileEntry &entry : archive.entries()) {
            if (!options.selection.includes(archive, entry))
                continue;
            if (options.sortKeys.empty())
                (list.*write)({&archive, &entry});
            else
                rows.push_back({&archive, &entry});
        }
    sortRows(rows, options.sortKeys);
    for (const Row &row : rows)
        (list.*write)(row);
    list.finish();
    return statusOver(dataSet,
                      options.selection.sayWhatIsNotThere(dataSet) ? kFine : kFoundOrFailed);
}

} // namespace

CommandAction addListCommand(CLI::App &command) {
    const auto options = std::make_shared<Options>();
    command.add_option("path", options->path, "Data directory or archive")->required();
    command.add_option("--format", options->format, "text, tsv, or json: an object a line")
        ->check(CLI::IsMember({"text", "tsv", "json"}));
    command
        .add_option("--sort", options->sortKeys,
                    "Order by size, date or id; a minus before it turns it round")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember({"size", "date", "id", "-size", "-date", "-id"}));
    options->selection.addOptions(command);
    return [options](const GlobalOptions &global) { return list(*options, global); };
}
