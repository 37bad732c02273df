#include "data_tool/RecordReader.h"

#include "decode/ZPRecordTreeJSON.h"
#include "decode/ZPRecordTreeText.h"
#include "game/WQRecordClass.h"
#include "io/ZPSystemLog.h"

std::string RecordReader::text(const Archive &archive, std::uint32_t identifier,
                               std::span<const std::byte> bytes) {
    const WQRecordClass *recordClass = nullptr;
    if (archive.game->game == ZPGorvaneGame::first)
        recordClass = archive.role == ArchiveRole::cell
                          ? &WQRecordClassForCellIdentifier(identifier)
                          : WQRecordClassForPortalIdentifier(identifier);
    if (recordClass == nullptr || !recordClass->isDecoded)
        return ZPRecordTreeText(_tree, false);
    const auto record = recordClass->newRecord(bytes, &_clientData);
    return record != nullptr ? record->dumpText() : std::string();
}

std::string RecordReader::json() const {
    std::string text;
    ZPAppendRecordTreeJSON(text, _tree);
    text += '\n';
    return text;
}

std::string faultText(const ZPDecodingResult &result) {
    if (result.fault)
        return ZPFormat("at %08x: %s", result.fault->offset, result.fault->message.c_str());
    if (result.bytesLeft > 0)
        return ZPFormat("%llu bytes are left", static_cast<unsigned long long>(result.bytesLeft));
    return {};
}
