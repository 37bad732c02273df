#include "data_tool/RecordReader.h"

#include "decode/ZPRecordTreeJSON.h"
#include "decode/ZPRecordTreeText.h"
#include "game/WQRecordClass.h"
#include "game/WQWorldInfo.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

namespace {

/// Null where no C++ class reads the record's fields.
const WQRecordClass *classOf(const Archive &archive, std::uint32_t identifier) {
    if (archive.family->game != ZPGorvaneGame::first)
        return nullptr;
    const WQRecordClass *recordClass = archive.role == ZPGorvaneArchiveRole::cell
                                           ? &WQRecordClassForCellIdentifier(identifier)
                                           : WQRecordClassForPortalIdentifier(identifier);
    return recordClass != nullptr && recordClass->isDecoded ? recordClass : nullptr;
}

} // namespace

bool RecordReader::hasClass(const Archive &archive, std::uint32_t identifier) {
    return classOf(archive, identifier) != nullptr;
}

std::string RecordReader::text(const Archive &archive, std::uint32_t identifier,
                               std::span<const std::byte> bytes) {
    const WQRecordClass *recordClass = classOf(archive, identifier);
    const auto record =
        recordClass != nullptr ? recordClass->newRecord(bytes, &_clientData) : nullptr;
    return textOfRecord(record.get(), _tree);
}

std::string RecordReader::faultInContents(const Archive &archive, std::uint32_t identifier,
                                          std::span<const std::byte> bytes) {
    if (identifier != kWQWorldInfoIdentifier ||
        archive.kindOf(identifier).className != std::string_view("WQWorldInfo"))
        return {};
    const auto info = ZPRecordWithData<WQWorldInfo>(bytes, &_clientData);
    return info ? info->faultInLandHeights() : std::string();
}

std::string RecordReader::json() const {
    std::string text;
    ZPAppendRecordTreeJSON(text, _tree);
    text += '\n';
    return text;
}

std::string textOfRecord(const ZPGorvaneStoredObject *record, const ZPRecordTree &tree) {
    std::string text = record != nullptr ? ZPPrintableText(record->dumpText()) : std::string();
    return text.empty() ? ZPRecordTreeText(tree, false) : text;
}

std::string faultText(const ZPDecodingResult &result) {
    if (result.fault)
        return ZPFormat("at %08x: %s", result.fault->offset, result.fault->message.c_str());
    if (result.bytesLeft > 0)
        return ZPFormat("%llu bytes are left", static_cast<unsigned long long>(result.bytesLeft));
    return {};
}
