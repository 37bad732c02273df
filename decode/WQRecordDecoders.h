#pragma once

#include "decode/ZPFieldOutput.h"

#include <string_view>

/// What a decoder may have to know of the data set that its record is from.
struct WQDecodingContext {
    /// Data version of the portal archive; 0 where there is none.
    std::uint32_t portalVersion = 0;
};

/// A record class whose decoder is written in C++: a file of its own, and a row here.
struct WQRecordDecoderRow {
    std::string_view className;
    void (*decode)(ZPDataCursor &cursor, ZPFieldOutput &output, const WQDecodingContext &context);
};

void WQDecodeLandBlock(ZPDataCursor &cursor, ZPFieldOutput &output, const WQDecodingContext &);
void WQDecodeVersion(ZPDataCursor &cursor, ZPFieldOutput &output, const WQDecodingContext &);
void WQDecodeWorldInfo(ZPDataCursor &cursor, ZPFieldOutput &output,
                       const WQDecodingContext &context);

inline constexpr WQRecordDecoderRow kWQRecordDecoders[] = {
    {"WQLandBlock", &WQDecodeLandBlock},
    {"WQVersion", &WQDecodeVersion},
    {"WQWorldInfo", &WQDecodeWorldInfo},
};
