#include "decode/ZPRecordDecoder.h"

ZPDecodingResult ZPDecodeRecord(ZPRecordDecoder &decoder, std::span<const std::byte> record,
                                ZPRecordTree &tree) {
    ZPDataCursor cursor(record);
    ZPFieldOutput output(cursor, tree);
    const auto failed = [&](const std::exception &exception) {
        while (tree.depth() > 0)
            output.closeContainer();
        return ZPDecodingResult{{{exception.what(), static_cast<std::uint32_t>(cursor.offset())}},
                                0};
    };
    try {
        decoder.decode(cursor, output);
    } catch (const ZPRangeException &exception) {
        return failed(exception);
    } catch (const ZPGenericException &exception) {
        return failed(exception);
    } catch (const ZPRecordTreeOverflow &exception) {
        return failed(exception);
    }
    return {std::nullopt, cursor.remaining()};
}
