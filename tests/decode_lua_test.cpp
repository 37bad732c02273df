#include "decode/ZPLuaDecoder.h"
#include "decode/ZPRecordTreeDifference.h"
#include "decode/ZPRecordTreeJSON.h"
#include "decode/ZPRecordTreeText.h"
#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include <fstream>
#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

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

TEST_F(LuaDecoder, ReadsEveryFormUnderItsName) {
    const struct {
        const char *expression, *bytes, *text;
    } cases[] = {
        {"cursor:readByte()", "81", "129"},
        {"cursor:readLittleInt16()", "0180", "32769"},
        {"cursor:readBigInt16()", "0180", "384"},
        {"cursor:readLittleInt32()", "01020384", "2214789633"},
        {"cursor:readBigInt32()", "81020304", "2164392708"},
        {"cursor:readLittleInt64()", "FFFFFFFF FFFFFFFF", "18446744073709551615"},
        {"cursor:readBigInt64()", "00000000 00000102", "258"},
        {"cursor:readLittleFloat32()", "CDCCCC3D", "0.1"},
        {"cursor:readBigFloat32()", "3DCCCCCD", "0.1"},
        {"cursor:readLittleFloat64()", "000000A0 9999B93F", "0.10000000149011612"},
        {"cursor:wq_readPartialBigInt32(2)", "0102", "16908288"},
        {"cursor:wq_readLittleInt15()", "8102", "258"},
        {"cursor:wq_readWackyInt15()", "0102", "513"},
        {"cursor:wq_readPackedLittleInt30()", "C0013412", "70196"},
        {"cursor:wq_readPackedLittleInt32a()", "01800200", "2"},
        {"cursor:wq_readPackedLittleInt32()", "01800200 0100", "2"},
    };
    for (const auto &row : cases) {
        const auto result =
            decode("out:number('v', " + std::string(row.expression) + ")", hex(row.bytes));
        EXPECT_FALSE(result.fault) << row.expression;
        EXPECT_EQ(result.bytesLeft, 0u) << row.expression;
        EXPECT_EQ(ZPRecordTreeText(tree, false), "v: " + std::string(row.text) + "\n")
            << row.expression;
    }
}

TEST_F(LuaDecoder, ReadsStringsAndVectors) {
    const struct {
        const char *expression, *bytes, *text;
    } cases[] = {
        {"cursor:wq_readLength8StringAndAlign(true)", "01 80 0000", "\"€\""},
        {"cursor:wq_readLength15StringAndAlign(false)", "02 6162", "\"ab\""},
        {"cursor:wq_readLength16StringAndAlign(true)", "0200 6162", "\"ab\""},
        {"cursor:wq_readLength32StringAndAlign(false)", "01000000 61", "\"a\""},
        {"cursor:wq_readLengthVar30StringAndAlign(false)", "8001 61", "\"a\""},
        {"cursor:wq_readLengthVar30UTF16StringAndAlign(false)", "01 AC20", "\"€\""},
        {"cursor:wq_readLength15UTF16StringAndAlign(false)", "01 6100", "\"a\""},
        {"cursor:wq_readNibbledLength16StringAndAlign(false)", "0100 16", "\"a\""},
        {"cursor:wq_readStringOfLength(1, false, true)", "16", "\"a\""},
        {"cursor:readUTF16StringOfLength(1, true)", "6100 0000", "\"a\""},
        {"cursor:readLength8UTF16StringAndAlign(false)", "01 6100", "\"a\""},
    };
    for (const auto &row : cases) {
        const auto result =
            decode("out:text('v', " + std::string(row.expression) + ")", hex(row.bytes));
        EXPECT_EQ(result.bytesLeft, 0u) << row.expression;
        EXPECT_EQ(ZPRecordTreeText(tree, false), "v: " + std::string(row.text) + "\n")
            << row.expression;
    }
    // Stored w, x, y, z; given with the real part last.
    decode("out:vector('q', cursor:readLittleQuaternion())",
           hex("0000803F 00000000 00000040 00000000"));
    EXPECT_EQ(json(), R"({"q":{"x":0,"y":2,"z":0,"w":1}})");
}

TEST_F(LuaDecoder, FloatsHaveTheDigitsOfTheirPrecision) {
    decode("out:number('f', cursor:readLittleFloat32()) out:number('d', cursor:readLittleFloat64())"
           "out:number('i', cursor:readLittleFloat32())",
           hex("CDCCCC3D 9A9999999999B93F 000080FF"));
    EXPECT_EQ(json(), R"({"f":0.1,"d":0.1,"i":"-inf"})");
    EXPECT_EQ(ZPRecordTreeText(tree, false), "f: 0.1\nd: 0.1\ni: -inf\n");
}

TEST_F(LuaDecoder, MovesAndTellsWhereItIs) {
    const auto result = decode(R"(
        cursor:advanceByLength(1) cursor:alignToTwoByteBoundary()
        out:number('offset', cursor:offset())
        out:boolean('aligned', cursor:isOnFourByteBoundary())
        local x, y, z = cursor:readLittleVector3()
        out:vector('v', x, y, z)
        out:hex('word', cursor:readLittleInt16(), { [0x102] = 'odd' })
        out:boolean('end', cursor:isAtEnd())
        out:bytes('uuid', cursor:readUUID())
        out:hex('last', 7, { [7] = 8 })
        out:flags('one', 1, { [0] = 'day' })
        out:flags('other', 4, { [2] = 'night' })
        out:boolean('end', cursor:isAtEnd()))",
                               hex("01 00 0000803F 00000040 00004040 0201"
                                   "00112233445566778899aabbccddeeff"));
    ASSERT_FALSE(result.fault) << result.fault->message;
    EXPECT_EQ(json(), R"({"offset":2,"aligned":false,"v":{"x":1,"y":2,"z":3},)"
                      R"("word":{"value":"0x0102","name":"odd"},"end":false,)"
                      R"("uuid":"00112233445566778899aabbccddeeff",)"
                      R"("last":{"value":"0x0000000000000007","name":"?"},)"
                      R"("one":{"value":"0x0000000000000001","set":["day"]},)"
                      R"("other":{"value":"0x0000000000000004","set":["night"]},"end#2":true})");
}

TEST_F(LuaDecoder, NumbersOfAScriptHaveASignWhereTheyAreNegative) {
    decode("out:number('least', math.mininteger) out:number('zero', 0) out:number('half', 0.5)"
           "out:number('named', -2, { [-2] = 'odd' }) out:number('third', 1 / 3)",
           hex("01"));
    EXPECT_EQ(json(), R"({"least":-9223372036854775808,"zero":0,"half":0.5,)"
                      R"("named":{"value":-2,"name":"odd"},"third":0.3333333333333333})");
}

TEST_F(LuaDecoder, TellsWhereEachValueStood) {
    const char body[] = R"(
        out:identifier(cursor:readLittleInt32())
        local word = cursor:readLittleInt16()
        out:bits('road', word, 0, 2)
        out:bits('kind', word, 2, 5, { [3] = 'mud' })
        out:flags('open', cursor:readByte(), { [0] = 'day', [2] = 'night' })
        cursor:alignToFourByteBoundary()
        local count = cursor:readLittleInt16()
        out:groups('wares', count, function()
            out:reference('image', cursor:readBigInt32())
            out:signed('stock', cursor:readLittleInt16(), 16)
        end)
        out:list('names', 1, function()
            out:text('name', cursor:wq_readLength8StringAndAlign(false))
        end)
        out:bytes('rest', cursor:readDataWithLength(cursor:remaining())))";
    const auto result = decode(body, hex("01000040 0E00 0D 00 0100 06000001 FEFF 02 1B0A BEEF"));
    ASSERT_FALSE(result.fault) << result.fault->message;
    EXPECT_EQ(ZPRecordTreeText(tree, true), "00000000     4  identifier: 40000001\n"
                                            "00000004     2  road: 2 [bits 0-1]\n"
                                            "00000004     2  kind: 3 [bits 2-6] (mud)\n"
                                            "00000006     1  open: .d (day, night, bit 3)\n"
                                            "00000008     8  wares: list of 1\n"
                                            "0000000a     6    [0]: 2 values\n"
                                            "0000000a     4      image: -> 06000001\n"
                                            "0000000e     2      stock: -2\n"
                                            "00000010     3  names: list of 1\n"
                                            "00000010     3    [0] name: \"\\u{1b}\\n\"\n"
                                            "00000013     2  rest: beef\n");
    EXPECT_EQ(json(),
              R"({"identifier":"0x40000001","road":2,"kind":{"value":3,"name":"mud"},)"
              R"("open":{"value":"0x0d","set":["day","night","bit 3"]},)"
              R"("wares":[{"image":"0x06000001","stock":-2}],"names":["\u001B\n"],"rest":"beef"})");
}

TEST_F(LuaDecoder, AnInsertedElementIsOneChange) {
    const auto list = decoder(R"(
        out:number('size', cursor:readByte())
        out:list('values', cursor:remaining(), function() out:number('', cursor:readByte()) end))");
    const auto changes = [&](const char *old, const char *now) {
        ZPRecordTree before, after;
        EXPECT_FALSE(ZPDecodeRecord(*list, hex(old), before).fault);
        EXPECT_FALSE(ZPDecodeRecord(*list, hex(now), after).fault);
        std::string text;
        for (const ZPRecordChange &change : ZPRecordTreeDifference(before, after))
            text += change.path + " '" + change.before + "' '" + change.after + "'\n";
        return text;
    };
    EXPECT_EQ(changes("01 0A0B0C", "02 0A0B630C"), "size '1' '2'\nvalues[2] '' '99'\n");
    EXPECT_EQ(changes("02 0A0B630C", "02 0A0B630C"), "");
    // Of equal elements, each counts once: at the beginning or at the end.
    EXPECT_EQ(changes("01 0A", "01 0A0A"), "values[1] '' '10'\n");
    EXPECT_EQ(changes("01 0A0A0A", "01 0A0A"), "values[2] '10' ''\n");
    EXPECT_EQ(changes("01 0A0B0A", "01 0A"), "values[1] '11' ''\nvalues[2] '10' ''\n");
}

TEST_F(LuaDecoder, FieldsThatCameOrWentAreFoundByName) {
    const auto pairs = decoder(R"(
        while not cursor:isAtEnd() do
            out:number(({ 'a', 'b', 'c' })[cursor:readByte()], cursor:readByte())
        end)");
    ZPRecordTree before, after;
    EXPECT_FALSE(ZPDecodeRecord(*pairs, hex("0105 0206 0207"), before).fault);
    EXPECT_FALSE(ZPDecodeRecord(*pairs, hex("0206 0308 0309 0109"), after).fault);
    std::string text;
    for (const ZPRecordChange &change : ZPRecordTreeDifference(before, after))
        text += change.path + " '" + change.before + "' '" + change.after + "'\n";
    EXPECT_EQ(text, "a '5' '9'\nb '7' ''\nc '' '8'\nc '' '9'\n");
}

TEST_F(LuaDecoder, CanDoNothingButDecode) {
    const char *const names[] = {"io",           "os",           "require",      "load",
                                 "loadstring",   "dofile",       "loadfile",     "package",
                                 "debug",        "coroutine",    "pcall",        "xpcall",
                                 "getmetatable", "rawset",       "setmetatable", "collectgarbage",
                                 "_G",           "print",        "string.rep",   "string.dump",
                                 "string.gsub",  "string.find",  "string.match", "table.move",
                                 "table.insert", "table.remove", "math.random",  "('').rep",
                                 "utf8",         "warn"};
    for (const std::string name : names)
        EXPECT_EQ(fault("assert(" + name + " == nil, 'is there')"), "") << name;
    EXPECT_THAT(refusal("\x1bLua"), HasSubstr("attempt to load a binary chunk"));
}

TEST_F(LuaDecoder, IsBoundInStepsAndMemoryAndGoesOn) {
    const struct {
        const char *body, *message;
    } cases[] = {
        {"while true do end", "takes too long"},
        {"local s = 'x' while true do s = s .. s end", "takes too much memory"},
        {"local t = {} while true do t[#t + 1] = {} end", "takes too"},
        {"local function f() return f() + 1 end f()", "o"},
        {"local function f() out:group('g', f) end f()", "too deep"},
        {"out:list('l', 1 << 62, type)", "each call of a list's function adds one value"},
        {"out:groups('l', 1 << 62, type)", "more values than its bytes account for"},
        {"out:list('l', 2, function() out:number('a', 1) out:number('b', 2) end)", "out:groups"},
        {"cursor.readByte()", "with a colon"},
        {"cursor:setOffset(-1)", "is negative"},
        {"cursor:setOffset(65)", "seek past end"},
        {"cursor:readDataWithLength(1 << 62)", "read past end"},
        {"cursor:readUTF16StringOfLength(1 << 63, false)", "negative"},
        {"cursor:readUTF16StringOfLength(1 << 62, false)", "read past end"},
        {"out:text('t', '\\xff')", "UTF-8"},
        {"out:boolean('b', 1)", "boolean expected"},
        {"out:vector('v', 1, 'x')", "number expected"},
        {"local s = 'x' for i = 1, 10 do s = s .. s end while true do out:text('t', s) end",
         "more text than its bytes account for"},
        {"out:bits('b', 1, 60, 5)", "number of bits"},
        {"error({})", "an error that is no text"},
    };
    for (const auto &row : cases)
        EXPECT_THAT(fault(row.body), HasSubstr(row.message)) << row.body;

    // The record after a bad one is decoded as if nothing had been.
    const auto picky = decoder(R"(
        local kind = cursor:readByte()
        held = held or {}
        local text = 'x'
        while kind == 1 do text = text .. text; held[#held + 1] = text end
        out:number('kind', kind))");
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(ZPDecodeRecord(*picky, hex("01"), tree).fault);
        EXPECT_FALSE(ZPDecodeRecord(*picky, hex("02"), tree).fault);
    }
    // One that hangs on every record is not waited for each time.
    const auto stuck = decoder("while true do end");
    for (int round = 0; round < 12; ++round)
        EXPECT_TRUE(ZPDecodeRecord(*stuck, hex("01"), tree).fault);
    EXPECT_THAT(ZPDecodeRecord(*stuck, hex("01"), tree).fault->message,
                HasSubstr("not tried again"));
}

TEST_F(LuaDecoder, SaysWhatIsWrongByFileAndLine) {
    const std::string path = (_folder / "decoder.lua").string();
    EXPECT_THAT(refusal("return {\n  name = \n}"), StartsWith(path + ":3: "));
    EXPECT_THAT(refusal("local x\nx()"), StartsWith(path + ":2: "));
    EXPECT_EQ(refusal("return 1"), path + ": does not return a table");
    EXPECT_THAT(refusal("return { name = '../x', types = { 1 } }"), HasSubstr("'name'"));
    EXPECT_THAT(refusal("return { name = 'x', types = { 256 } }"), HasSubstr("'types'"));
    EXPECT_THAT(refusal("return { name = 'x' }"), HasSubstr("neither 'types' nor 'classes'"));
    EXPECT_THAT(refusal("return { name = 'x', types = { 1 } }"), HasSubstr("'decode'"));
    EXPECT_THAT(refusal("while true do end"), HasSubstr("takes too long"));
    EXPECT_THAT(fault("out.number('a', 1)"), HasSubstr("with a colon, as in out:number"));
    EXPECT_THAT(fault("cursor.readByte()"), HasSubstr("with a colon, as in cursor:readByte"));
    constexpr std::size_t kMostScriptSize = 1 << 20;
    EXPECT_EQ(refusal(std::string(kMostScriptSize, ' ')), path + ": does not return a table");
    EXPECT_EQ(refusal(std::string(kMostScriptSize + 1, ' ')), path + ": is too long for a decoder");
    std::filesystem::remove(path);
    std::string message;
    EXPECT_EQ(ZPLuaDecoder::decoderAtPath(path, message), nullptr);
    EXPECT_EQ(message, path + ": cannot be read");

    // A record that ends too early: what came before it is there, and where it ended.
    const auto result =
        decode("out:number('a', cursor:readByte())\n"
               "out:group('g', function() out:number('b', cursor:readLittleInt32()) "
               "end)",
               hex("0102"));
    ASSERT_TRUE(result.fault);
    EXPECT_EQ(result.fault->offset, 1u);
    EXPECT_THAT(result.fault->message, StartsWith(path + ":3: Trying to read past end"));
    EXPECT_EQ(ZPRecordTreeText(tree, false), "a: 1\ng: 0 values\n");
}

} // namespace
