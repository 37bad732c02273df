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

int listDecoders(const GlobalOptions &global) {
    WQDecoderSet decoders;
    Output output;
    for (const WQRecordDecoderRow &row : kWQRecordDecoders)
        output.format("%-24s %-28s built in\n", std::string(row.className).c_str(),
                      std::string(row.className).c_str());
    for (const auto &folder : decoderFolders(global))
        decoders.addFolder(folder);
    int status = kFine;
    for (const auto &file : decoders.files()) {
        const std::string path = ZPEscapedText(file.path.string());
        if (file.fault.empty()) {
            output.format("%-24s %-28s %s\n", file.description.name.c_str(),
                          recordsOf(file.description).c_str(), path.c_str());
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
