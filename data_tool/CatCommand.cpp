#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "data_tool/FileSelection.h"
#include "data_tool/RecordReader.h"
#include "decode/ZPRecordTreeText.h"
#include "io/ZPExtensions.h"
#include "io/ZPSystemLog.h"

#include <algorithm>

namespace {

struct Options {
    std::string path, identifier, archive;
    bool asHex = false, asText = false, asJSON = false, withOffsets = false;
};

struct File {
    const Archive *archive;
    const ZPGorvaneFileEntry *entry;
};

File findFile(const DataSet &dataSet, const Options &options, std::uint32_t identifier) {
    // As it is listed, or as its file is named.
    const std::string name = dataSet.archiveWithName(options.archive) != nullptr
                                 ? options.archive
                                 : plainName(options.archive);
    if (!name.empty() && dataSet.archiveWithName(name) == nullptr)
        throw CommandFailure("there is no archive named " + options.archive);
    std::vector<File> found;
    std::string names;
    for (const Archive &archive : dataSet.archives) {
        const ZPGorvaneFileEntry *entry = archive.entries().find(identifier);
        if (entry == nullptr || (!name.empty() && archive.name != name))
            continue;
        found.push_back({&archive, entry});
        names += (names.empty() ? "" : ", ") + archive.name;
    }
    if (found.empty()) {
        const bool mayBeLost = std::ranges::any_of(dataSet.archives, [=](const Archive &archive) {
            return archive.dataFile->mayHaveLost(identifier);
        });
        throw CommandFailure(ZPFormat("%s: there is no file %08x%s", options.path.c_str(),
                                      identifier,
                                      mayBeLost ? ", or it is lost: the directory is damaged; "
                                                  "`plotterra-data check` says where"
                                                : ""));
    }
    if (found.size() > 1)
        throw CommandFailure(ZPFormat("%08x is in several archives (%s): pick one with --archive",
                                      identifier, names.c_str()),
                             kUsageError);
    return found.front();
}

void writeHex(Output &output, std::span<const std::byte> bytes) {
    for (std::size_t offset = 0; offset < bytes.size(); offset += 16)
        output.format(
            "%08zx  %s\n", offset,
            ZPHexDumpRow(bytes.subspan(offset, std::min<std::size_t>(16, bytes.size() - offset)))
                .c_str());
}

int writeDecoded(Output &output, const Options &options, const GlobalOptions &global,
                 const DataSet &dataSet, const File &file, std::span<const std::byte> bytes) {
    const WQDecoderSet decoders = loadDecoders(global);
    RecordReader reader(dataSet, decoders);
    const std::uint32_t identifier = file.entry->identifier;
    const auto result = reader.decode(*file.archive, identifier, bytes);
    if (!result) {
        const std::string text = options.asText && !options.withOffsets
                                     ? reader.text(*file.archive, identifier, bytes)
                                     : std::string();
        const std::string name(decoders.nameOf(file.archive->kindOf(identifier)));
        if (text.empty())
            throw CommandFailure(ZPFormat("%08x: there is no decoder for it%s%s", identifier,
                                          name.empty() ? "" : ", a ", name.c_str()));
        output.write(text);
        output.flush();
        return kFine;
    }
    if (options.asJSON)
        output.write(reader.json());
    else if (options.withOffsets || result->fault)
        output.write(ZPRecordTreeText(reader.tree(), options.withOffsets));
    else
        output.write(reader.text(*file.archive, identifier, bytes));
    output.flush();
    const std::string fault = faultText(*result);
    if (!fault.empty())
        say(ZPFormat("%08x: %s", identifier, fault.c_str()));
    return fault.empty() ? kFine : kFoundOrFailed;
}

int cat(const Options &options, const GlobalOptions &global) {
    const auto identifier = identifierInText(options.identifier);
    if (!identifier)
        throw CommandFailure("'" + options.identifier + "' is no identifier", kUsageError);
    const DataSet dataSet = global.openDataSet(options.path);
    const File file = findFile(dataSet, options, *identifier);
    ZPData scratch;
    ZPError error;
    const auto bytes = file.archive->dataFile->readBytesForFileEntry(*file.entry, scratch, &error);
    if (!bytes)
        throw CommandFailure(ZPFormat("%08x: %s", *identifier, error.failureReason().c_str()));
    Output output;
    if (options.asText || options.asJSON)
        return writeDecoded(output, options, global, dataSet, file, *bytes);
    if (options.asHex)
        writeHex(output, *bytes);
    else
        output.writeRaw({reinterpret_cast<const char *>(bytes->data()), bytes->size()});
    output.flush();
    return kFine;
}

} // namespace

CommandAction addCatCommand(CLI::App &command) {
    const auto options = std::make_shared<Options>();
    command.add_option("path", options->path, "Data directory or archive")->required();
    command.add_option("id", options->identifier, "The file's identifier")->required();
    command
        .add_option("--archive", options->archive, "Where in a data directory: portal, cell, ...")
        ->check(isNotEmpty);
    auto *hex = command.add_flag("--hex", options->asHex, "A hexadecimal dump of its bytes");
    auto *text = command.add_flag("--text", options->asText, "The decoded record as text");
    auto *json = command.add_flag("--json", options->asJSON, "The decoded record as JSON");
    hex->excludes(text)->excludes(json);
    text->excludes(json);
    command
        .add_flag("--offsets", options->withOffsets,
                  "With --text: the place and length of each value's bytes")
        ->needs(text);
    return [options](const GlobalOptions &global) { return cat(*options, global); };
}
