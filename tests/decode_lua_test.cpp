#include "decode/ZPRecordTreeDifference.h"
#include "tests/LuaDecoding.h"

#include <sys/stat.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

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
        out:flags('other', math.mininteger | 4, { [2] = 'night', [63] = 'last' })
        out:boolean('end', cursor:isAtEnd()))",
                               hex("01 00 0000803F 00000040 00004040 0201"
                                   "00112233445566778899aabbccddeeff"));
    ASSERT_FALSE(result.fault) << result.fault->message;
    EXPECT_EQ(json(),
              R"({"offset":2,"aligned":false,"v":{"x":1,"y":2,"z":3},)"
              R"("word":{"value":"0x0102","name":"odd"},"end":false,)"
              R"("uuid":"00112233445566778899aabbccddeeff",)"
              R"("last":{"value":"0x0000000000000007","name":"?"},)"
              R"("one":{"value":"0x0000000000000001","set":["day"]},)"
              R"("other":{"value":"0x8000000000000004","set":["night","last"]},"end#2":true})");
}

TEST_F(LuaDecoder, NumbersOfAScriptHaveASignWhereTheyAreNegative) {
    decode("out:number('least', math.mininteger) out:number('zero', 0) out:number('half', 0.5)"
           "out:number('named', -2, { [-2] = 'odd' }) out:number('third', 1 / 3)",
           hex("01"));
    EXPECT_EQ(json(), R"({"least":-9223372036854775808,"zero":0,"half":0.5,)"
                      R"("named":{"value":-2,"name":"odd"},"third":0.3333333333333333})");
}

TEST_F(LuaDecoder, WhatWasReadInEightBytesIsShownSo) {
    decode(R"(
        local a, b = cursor:readLittleInt64(), cursor:readBigInt64()
        out:number('a', a) out:number('b', b) out:number('delta', -5) out:number('sum', a + 1)
        out:number('d', cursor:readLittleFloat64()) out:number('f', 0.25)
        out:number('s', cursor:readLittleFloat32()))",
           hex("FEFFFFFFFFFFFFFF 8000000000000000 000000A09999B93F CDCCCC3D"));
    EXPECT_EQ(json(), R"({"a":18446744073709551614,"b":9223372036854775808,"delta":-5,"sum":-1,)"
                      R"("d":0.10000000149011612,"f":0.25,"s":0.1})");
    EXPECT_EQ(tree[4].kind, ZPRecordValueKind::float64);
    EXPECT_EQ(tree[5].kind, ZPRecordValueKind::float32);
    // Not so in the next record.
    const auto same = decoder("if cursor:readByte() == 1 then\n"
                              "  out:number('v', cursor:readLittleInt64())\n"
                              "else out:number('v', -2) end");
    EXPECT_FALSE(ZPDecodeRecord(*same, hex("01 FEFFFFFFFFFFFFFF"), tree).fault);
    EXPECT_EQ(json(), R"({"v":18446744073709551614})");
    EXPECT_FALSE(ZPDecodeRecord(*same, hex("02"), tree).fault);
    EXPECT_EQ(json(), R"({"v":-2})");
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
    EXPECT_EQ(changes("01", "01 0A"), "values[0] '' '10'\n");
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

TEST_F(LuaDecoder, AChangeOfAnyKindIsTold) {
    const auto all = decoder(R"(
        out:identifier(cursor:readByte())
        out:number('n', cursor:readByte()) out:signed('s', cursor:readByte(), 8)
        out:hex('h', cursor:readByte(), { [2] = 'two' }) out:boolean('b', cursor:readByte() == 1)
        out:flags('f', cursor:readByte(), { [1] = 'one' }) out:bits('p', cursor:readByte(), 0, 2)
        out:reference('r', cursor:readByte())
        out:group('g', function() out:text('t', cursor:wq_readLength8StringAndAlign(false)) end)
        out:bytes('y', cursor:readDataWithLength(1)) out:number('x', cursor:readByte() / 4))");
    const ZPData old = hex("01 01 01 01 01 01 01 01 01 61 01 01");
    const char *const changes[] = {"identifier: 00000001 => 00000002",
                                   "n: 1 => 2",
                                   "s: 1 => 2",
                                   "h: 0x01 (?) => 0x02 (two)",
                                   "b: true => false",
                                   "f: .1 (bit 0) => .2 (one)",
                                   "p: 1 [bits 0-1] => 2 [bits 0-1]",
                                   "r: -> 00000001 => -> 00000002",
                                   nullptr,
                                   "g.t: \"a\" => \"b\"",
                                   "y: 01 => 02",
                                   "x: 0.25 => 0.5"};
    ZPRecordTree before, after;
    for (std::size_t place = 0; place < old.size(); ++place) {
        if (changes[place] == nullptr)
            continue;
        ZPData now = old;
        now[place] = static_cast<std::byte>(std::to_integer<unsigned>(now[place]) + 1);
        EXPECT_FALSE(ZPDecodeRecord(*all, old, before).fault);
        EXPECT_FALSE(ZPDecodeRecord(*all, now, after).fault);
        std::string text;
        for (const ZPRecordChange &change : ZPRecordTreeDifference(before, after))
            text += change.path + ": " + change.before + " => " + change.after;
        EXPECT_EQ(text, changes[place]);
    }
}

TEST_F(LuaDecoder, SaysWhatIsWrongByFileAndLine) {
    const std::string path = (_folder / "decoder.lua").string();
    EXPECT_THAT(refusal("return {\n  name = \n}"), StartsWith(path + ":3: "));
    EXPECT_THAT(refusal("local x\nx()"), StartsWith(path + ":2: "));
    EXPECT_EQ(refusal("return 1"), path + ": does not return a table");
    EXPECT_THAT(refusal("return { name = '../x', types = { 1 } }"), HasSubstr("'name'"));
    EXPECT_THAT(refusal("return { name = 'x', types = { 256 } }"), HasSubstr("'types'"));
    EXPECT_THAT(refusal("return { name = 'x', types = { 1 }, games = { 'ostwale' } }"),
                HasSubstr("'games' has ostwale in it, which is no game"));
    EXPECT_THAT(refusal("return { name = 'x' }"), HasSubstr("neither 'types' nor 'classes'"));
    EXPECT_THAT(refusal("return { name = 'x', types = { 1 } }"), HasSubstr("'decode'"));
    EXPECT_THAT(refusal("while true do end"), HasSubstr("takes too long"));
    EXPECT_THAT(fault("out.number('a', 1)"), HasSubstr("with a colon, as in out:number"));
    EXPECT_THAT(fault("cursor.readByte()"), HasSubstr("with a colon, as in cursor:readByte"));
    constexpr std::size_t kMostScriptSize = 256 << 10;
    EXPECT_EQ(refusal(std::string(kMostScriptSize, ' ')), path + ": does not return a table");
    EXPECT_EQ(refusal(std::string(kMostScriptSize + 1, ' ')), path + ": is too long for a decoder");
    std::filesystem::remove(path);
    std::string message;
    EXPECT_EQ(ZPLuaDecoder::decoderAtPath(path, message), nullptr);
    EXPECT_EQ(message, path + ": cannot be read: No such file or directory");
    // A pipe is not waited for.
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(ZPLuaDecoder::decoderAtPath(path, message), nullptr);
    EXPECT_THAT(message, StartsWith(path + ": cannot be read: "));
    std::filesystem::remove(path);

    // A record that ends too early: what came before it is there, and where it ended.
    const auto result = decode("out:number('a', cursor:readByte())\n"
                               "out:list('l', 2, function() out:group('g', function()\n"
                               "  out:number('b', cursor:readLittleInt16()) end) end)",
                               hex("01020304"));
    ASSERT_TRUE(result.fault);
    EXPECT_EQ(result.fault->offset, 3u);
    EXPECT_THAT(result.fault->message, StartsWith(path + ":4: Trying to read past end"));
    EXPECT_EQ(tree.depth(), 0u);
    EXPECT_EQ(ZPRecordTreeText(tree, true), "00000000     1  a: 1\n"
                                            "00000001     2  l: list of 2\n"
                                            "00000001     2    [0] g: 1 values\n"
                                            "00000001     2      b: 770\n"
                                            "00000003     0    [1] g: 0 values\n");
    EXPECT_EQ(json(), R"({"a":1,"l":[{"b":770},{}]})");
    // Whatever an error is, it has the file's name.
    for (const char *body : {"error('odd', 0)", "error({})", "error()", "error(('x'):upper())",
                             "local s = 'x' while true do s = s .. s end"})
        EXPECT_THAT(fault(body), StartsWith(path + ":")) << body;
    EXPECT_LT(fault("local s = 'x' for i = 1, 18 do s = s .. s end error(s)").size(), 2000u);
}

} // namespace
