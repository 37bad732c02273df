// The data cursor: the first byte counts the operations, as many bytes name them, the rest is what
// they read. Texts are UTF-8, whatever the bytes were.

#include "fuzz/FuzzTarget.h"

#include "io/ZPDataCursor.h"
#include "io/ZPText.h"

#include <algorithm>

namespace {

void expectText(const std::string &text) {
    FuzzExpect(ZPIsValidUTF8(text));
    FuzzExpect(ZPStringFromUTF16(ZPUTF16FromString(text)) == text);
}

void perform(unsigned operation, ZPDataCursor &cursor) {
    const bool align = (operation & 0x80) != 0;
    const unsigned length = operation >> 4 & 7;
    ZPData stored;
    switch (operation & 15) {
    case 0: return expectText(cursor.wq_readLength8StringAndAlign(align));
    case 1: return expectText(cursor.wq_readLength15StringAndAlign(align));
    case 2: return expectText(cursor.wq_readLength16StringAndAlign(align));
    case 3: return expectText(cursor.wq_readLength32StringAndAlign(align));
    case 4: return expectText(cursor.wq_readLengthVar30StringAndAlign(align));
    case 5: return expectText(cursor.wq_readLengthVar30UTF16StringAndAlign(align));
    case 6: return expectText(cursor.wq_readLength15UTF16StringAndAlign(align));
    case 7: return expectText(cursor.wq_readNibbledLength16StringAndAlign(align, stored));
    case 8: return expectText(cursor.readLength8UTF16StringAndAlign(align));
    case 9: cursor.wq_readPartialBigInt32(length); return;
    case 10: cursor.wq_readWackyInt15(); return;
    case 11: cursor.wq_readPackedLittleInt32a(); return;
    case 12: cursor.wq_readPackedLittleInt32(); return;
    case 13: cursor.readDataWithLength(cursor.readLittleInt64()); return;
    case 14: cursor.advanceByLength(length); return;
    default: cursor.setOffset(cursor.readBigInt16()); return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    if (size == 0)
        return 0;
    const auto operations =
        std::span(bytes, size).subspan(1, std::min<std::size_t>(*bytes, size - 1));
    const auto data = std::as_bytes(std::span(bytes, size).subspan(1 + operations.size()));
    ZPDataCursor cursor(data);
    for (const unsigned operation : operations) {
        try {
            perform(operation, cursor);
        } catch (const ZPRangeException &) {
        } catch (const ZPGenericException &) {
        }
        FuzzExpect(cursor.offset() <= data.size() &&
                   cursor.remaining() == data.size() - cursor.offset());
    }

    // Bytes that read as Windows-1252 are written back as they were, any other text is tamed.
    FuzzExpect(ZPWindows1252FromString(ZPStringFromWindows1252(data)) ==
               ZPData(data.begin(), data.end()));
    const std::string_view text(reinterpret_cast<const char *>(data.data()), data.size());
    FuzzExpect(ZPWindows1252FromString(text).size() <= data.size());
    FuzzExpect((ZPStringFromUTF16(ZPUTF16FromString(text)) == text) == ZPIsValidUTF8(text));
    return 0;
}
