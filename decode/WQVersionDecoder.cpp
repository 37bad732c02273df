#include "decode/WQRecordDecoders.h"

void WQDecodeVersion(ZPDataCursor &cursor, ZPFieldOutput &output, const WQDecodingContext &) {
    output.number("version", cursor.readLittleInt32());
}
