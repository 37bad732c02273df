#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <system_error>

namespace {

std::string recordsOf(const ZPLuaDecoderDescription &decoder) {
    std::string records;
    const auto append = [&](const std::string &record) {
        records += (records.empty() ? "" : " ") + record;
    };
    for (const std::uint8_t type : decoder.types)
        append(ZPFormat("0x%02x", type));
    for (const std::string &name : decoder.classes)
        append(name);
    return records;
}

/// For which records another file goes before this one, and which.
void writeShadows(Output &output, const WQDecoderSet &decoders, std::size_t place) {
    const ZPLuaDecoderDescription &decoder = decoders.files()[place].description;
    const auto look = [&](const WQRecordKind &kind, const std::string &record) {
        const auto file = decoders.fileFor(kind);
        if (file && *file != place)
            output.format("%-24s %-28s behind %s\n", "", record.c_str(),
                          ZPEscapedText(decoders.files()[*file].path.string()).c_str());
    };
    for (const ZPGorvaneGame game : decoder.games) {
        for (const std::uint8_t type : decoder.types)
            look({game, {}, type}, ZPFormat("0x%02x", type));
        for (const std::string &name : decoder.classes)
            look({game, name}, name);
    }
}

int listDecoders(const GlobalOptions &global) {
    WQDecoderSet decoders;
    Output output;
    for (const WQRecordDecoderRow &row : kWQRecordDecoders)
        output.format("%-24s %-28s built in\n", std::string(row.className).c_str(),
                      std::string(row.className).c_str());
    for (const auto &folder : decoderFolders(global))
        decoders.addFolder(folder);
    int status = kFine;
    for (std::size_t place = 0; place < decoders.files().size(); ++place) {
        const WQDecoderSet::File &file = decoders.files()[place];
        const std::string path = ZPEscapedText(file.path.string());
        if (file.fault.empty()) {
            output.format("%-24s %-28s %s\n", file.description.name.c_str(),
                          recordsOf(file.description).c_str(), path.c_str());
            writeShadows(output, decoders, place);
            if (const std::string remark = remarkOn(file); !remark.empty()) {
                say(remark);
                status = kFoundOrFailed;
            }
        } else {
            output.format("%-24s %-28s %s\n", "-", "broken", ZPEscapedText(file.fault).c_str());
            status = kFoundOrFailed;
        }
    }
    std::error_code fault;
    for (const auto &folder : decoderFolders(global))
        if (!std::filesystem::is_directory(folder, fault))
            say("no decoders in " + folder.string());
    output.flush();
    return status;
}

} // namespace

CommandAction addDecodersCommand(CLI::App &) {
    return &listDecoders;
}
