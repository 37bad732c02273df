#include "decode/WQRecordDecoders.h"
#include "game/WQLandBlock.h"

// See WQLandBlock for the layout.

void WQDecodeLandBlock(ZPDataCursor &cursor, ZPFieldOutput &output, const WQDecodingContext &) {
    output.identifier(cursor.readLittleInt32());
    output.hexadecimal("objectBlockPresent", cursor.readLittleInt32());
    output.list("topology", [&] {
        for (unsigned vertex = 0; vertex < WQLandBlock::kVertexCount; ++vertex)
            output.group({}, [&] {
                const std::uint16_t word = cursor.readLittleInt16();
                output.bits("road", word, 0, 2);
                output.bits("terrain", word, 2, 5);
                output.bits("unknown", word, 7, 4);
                output.bits("terrainObjects", word, 11, 5);
            });
    });
    output.list("height", [&] {
        for (unsigned vertex = 0; vertex < WQLandBlock::kVertexCount; ++vertex)
            output.number({}, cursor.readByte());
    });
    output.hexadecimal("padding", cursor.readByte());
}
