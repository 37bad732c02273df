#pragma once

#include "decode/ZPLuaDecoder.h"
#include "decode/ZPRecordTreeJSON.h"
#include "decode/ZPRecordTreeText.h"
#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include <fstream>
#include <gmock/gmock.h>

/// Decoders in Lua from their scripts.
class LuaDecoder : public testing::Test {
  protected:
    std::filesystem::path write(const std::string &script) {
        const auto path = _folder / "decoder.lua";
        std::ofstream(path, std::ios::binary) << script;
        return path;
    }

    /// A decoder with this body; a failure to load it is the test's.
    std::unique_ptr<ZPLuaDecoder> decoder(const std::string &body) {
        std::string message;
        auto decoder = ZPLuaDecoder::decoderAtPath(
            write("return { name = 'Test', types = { 1 }, decode = function(cursor, out)\n" + body +
                  "\nend }"),
            message);
        EXPECT_NE(decoder, nullptr) << message;
        return decoder;
    }

    ZPDecodingResult decode(const std::string &body, const ZPData &record) {
        return ZPDecodeRecord(*decoder(body), record, tree);
    }

    /// What decoding says: the fault's message, or nothing.
    std::string fault(const std::string &body, const ZPData &record = ZPData(64)) {
        const auto result = decode(body, record);
        return result.fault ? result.fault->message : "";
    }

    /// Why a file is refused.
    std::string refusal(const std::string &script) {
        std::string message;
        const auto decoder = ZPLuaDecoder::decoderAtPath(write(script), message);
        return decoder != nullptr ? "accepted" : message;
    }

    std::string json() const {
        std::string text;
        ZPAppendRecordTreeJSON(text, tree);
        return text;
    }

    TemporaryFolder _folder;
    ZPRecordTree tree;
};
