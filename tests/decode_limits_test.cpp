// What a decoder in Lua cannot do: reach out, run on, hold on to anything, or differ from run to
// run.

#include "tests/LuaDecoding.h"

namespace {

using testing::HasSubstr;

/// A string of half a megabyte.
#define LONG "local s = ' ' for i = 1, 19 do s = s .. s end"

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

// None of these ends by itself, or not within a lifetime.
TEST_F(LuaDecoder, IsBoundInWorkAndMemory) {
    const struct {
        const char *body, *message;
    } cases[] = {
        {"while true do end", "takes too long"},
        {"local s = 'x' while true do s = s .. s end", "takes too much memory"},
        {LONG " local t = {} for i = 1, 5000 do t[i] = s end table.sort(t)", "takes too long"},
        {LONG " local t = {} for i = 1, 9000 do t[i] = s end string.format(('%.0s' .. s):sub(1, 4) "
              ".. s, table.unpack(t))",
         "takes too long"},
        {LONG " while true do string.format('%.0s', s) end", "takes too long"},
        {LONG " while true do local x = s < s end", "takes too long"},
        {LONG " while true do tonumber(s) end", "takes too long"},
        {LONG " s = s .. 1 while true do local x = -s end", "takes too long"},
        {LONG " while true do s:lower() end", "takes too long"},
        {"local t = {} for i = 1, 9000 do t[i] = '' end while true do table.concat(t) end",
         "takes too long"},
        {"table.concat({}, '', 1, 1 << 62)", "takes too long"},
        {"while true do select(-1, ('x'):byte(1, -1)) end", "takes too long"},
        {"local t = {} for i = 1, 9000 do t[i] = i end while true do next(t) end",
         "takes too long"},
        {"local t = {} for i = 1, 9000 do t[i] = i end while true do pairs(t) end",
         "takes too long"},
        {"local t = {} for i = 1, 9000 do t[i] = 9000 - i end while true do table.sort(t, "
         "function(a, b) return a < b end) end",
         "takes too long"},
        {LONG " local t = {} for i = 0, 63 do t[i] = s end out:flags('f', -1, t)",
         "more text than its bytes account for"},
        {LONG " out:number(s, 1)", "longer than 255 bytes"},
        {"local t = {} while true do t[#t + 1] = {} end", "takes too long"},
        {"local function f() return f() + 1 end f()", "takes too long"},
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
}

TEST_F(LuaDecoder, LimitsGrowWithTheRecord) {
    const struct {
        const char *body;
        std::size_t tooSmall, largeEnough;
    } cases[] = {
        {"for i = 1, 1000000 do end", 100, 1000},
        {"local s = 'x' for i = 1, 22 do s = s .. s end", 1000, 200'000},
        {"for i = 1, 5000 do out:number('a', 1) end", 100, 200},
        {"local s = '' for i = 1, 300 do s = s .. 'abcdefghij' end "
         "for i = 1, 100 do out:text('t', s) end",
         100, 1000},
    };
    for (const auto &row : cases) {
        EXPECT_NE(fault(row.body, ZPData(row.tooSmall)), "") << row.body;
        EXPECT_EQ(fault(row.body, ZPData(row.largeEnough)), "") << row.body;
    }
}

/// What a record decodes to, and how it failed.
std::string outcome(ZPLuaDecoder &decoder, const ZPData &record) {
    ZPRecordTree tree;
    const ZPDecodingResult result = ZPDecodeRecord(decoder, record, tree);
    std::string text = result.fault ? result.fault->message : "";
    ZPAppendRecordTreeJSON(text, tree);
    return text;
}

TEST_F(LuaDecoder, NoRecordLeavesAnythingToTheNext) {
    const char *const bodies[] = {
        "count = (count or 0) + 1 out:number('count', count)",
        "held = held or {} if kind == 1 then while true do held[#held + 1] = { } end end "
        "out:number('held', #held)",
        "held = held or {} if kind == 1 then local s = 'xyz' while true do s = s .. s "
        "held[#held + 1] = s end end out:number('held', #held)",
        "if kind == 1 then while true do end end out:number('kind', kind)",
        "if kind == 1 then string.upper = nil math = nil end out:text('x', string.upper('x'))",
        "if kind == 1 then upvalue[1] = 2 end out:number('upvalue', upvalue[1] or 0)",
        "t = t or { a = 1, b = 2 } out:text('first', next(t)) if kind == 1 then t.a = nil end",
        "if kind == 1 then out:group('g', function() error('within') end) end "
        "out:number('kind', kind)",
        // What was made when the script was loaded: a walk, strings that hang on each other, and
        // what a collection of garbage finds in use.
        "out:number('walk', (walk(walked))) out:number('next', (next(walked)))",
        "if kind == 1 then for i = 1, 2000 do upvalue['k' .. i] = i end end "
        "out:text('s', tostring(upvalue.k7) .. type(string['up' .. 'per']) .. math.type(1))",
        "if kind == 1 then string['up' .. 'per'] = nil for i = 1, 9000 do local t = { i } end end "
        "out:text('s', type(string['up' .. 'per']))",
        "if kind == 1 then upvalue[1], walked = walked, nil for i = 1, 9000 do local t = { i } end "
        "end out:text('s', #upvalue .. type(walked) .. math.type(walk(walked)))",
        // A long string makes what follows dear, but not in the next record.
        "if kind == 1 then " LONG " end for i = 1, 20000 do end out:number('kind', kind)",
    };
    for (const std::string body : bodies) {
        const std::string script = "local upvalue, walk, walked = {}, pairs({ 1, 2, 3 }) "
                                   "return { name = 'T', types = { 1 }, "
                                   "decode = function(cursor, out) local kind = "
                                   "cursor:readByte() " +
                                   body + " end }";
        std::string message;
        const auto path = write(script);
        const auto used = ZPLuaDecoder::decoderAtPath(path, message);
        ASSERT_NE(used, nullptr) << message;
        for (const char *record : {"01", "02", "01", "01", "02", "02"})
            EXPECT_EQ(outcome(*used, hex(record)),
                      outcome(*ZPLuaDecoder::decoderAtPath(path, message), hex(record)))
                << body;
    }
}

TEST_F(LuaDecoder, GarbageIsNotCountedAsMemory) {
    for (const std::string body :
         {"for i = 1, 3500 do local t = s .. i end", "for i = 1, 3500 do local t = s:upper() end",
          // The stack grows with the calls, and shrinks when garbage is collected.
          "local function f(n) if n > 0 then f(n - 1) end return n end "
          "for i = 1, 60 do f(4000) for j = 1, 400 do local t = s .. j end end"})
        EXPECT_EQ(fault("local s = 'xyz' for i = 1, 9 do s = s .. s end " + body, ZPData(20000)),
                  "")
            << body;
}

TEST_F(LuaDecoder, ACopyHasTheSameScript) {
    const auto first = decoder("out:number('one', 1)");
    const auto second = first->copy();
    write("return nothing of use");
    first->rest();
    EXPECT_EQ(outcome(*first, hex("00")), R"({"one":1})");
    EXPECT_EQ(outcome(*second, hex("00")), R"({"one":1})");
}

TEST_F(LuaDecoder, TablesHaveOneOrder) {
    const struct {
        const char *body, *text;
    } cases[] = {
        {"local t = { z = 1, [-1] = 2, [2.5] = 3, [true] = "
         "4, [''] = 5, [2] = 6, [false] = 7, [math.mininteger] = 11, "
         "[math.huge] = 12, [-0.5] = 13, [1 << 62] = 14, [2.0^62 + 1024] = 15, zz = 16 } "
         "for k, v in pairs(t) do s = s .. v .. ' ' end",
         "11 2 13 6 3 14 15 12 5 1 16 7 4 "},
        {"local t = { d = 1, c = 1, b = 1, a = 1 } local k = next(t) while k do s = s .. k "
         "t[k] = nil k = next(t, k) end s = s .. tostring(next(t))",
         "abcdnil"},
        {"local t = { b = 1, a = 2, c = 3 } for k in pairs(t) do t.b = nil s = s .. k end", "ac"},
        {"local t, u = { 1, 2 }, { x = 3 } for i in next, t do for j in next, u do s = s .. i .. j "
         "end end",
         "1x2x"},
        {"local t = {} for i = 1, 200 do t[i] = { i % 3, i } end table.sort(t, function(a, b) "
         "return a[1] < b[1] end) s = t[1][2] .. ' ' .. t[66][2] .. ' ' .. t[67][2] .. ' ' .. "
         "t[200][2]",
         "3 198 1 200"},
        {"local t = { 'b', 'a\\1', 'a', '', 'a\\1b', 'Z' } table.sort(t) s = table.concat(t, ',')",
         ",Z,a,a\1,a\1b,b"},
        {"local t = { 3, 1.5, 2 } table.sort(t) s = table.concat(t, ' ')", "1.5 2 3"},
        {"s = tostring({}) .. tostring(out) .. tostring(type) .. string.format('%s', {}) .. "
         "tostring(nil) .. tostring(1.5)",
         "tableuserdatafunctiontablenil1.5"},
        {"s = ('%5.1f|%-3d|%q|%s|%%p'):format(2.25, 7, 'a', 'b')", "  2.2|7  |\"a\"|b|%p"},
        {"s = '10' + 1 .. ' ' .. -'2' .. ' ' .. table.concat({ 1, 2, 3 }, '-', 2, 3) .. "
         "select('#', 1, nil) .. select(2, 'a', 'b')",
         "11 -2 2-32b"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(fault("local s = '' " + std::string(row.body) + " out:bytes('s', s)"), "")
            << row.body;
        ASSERT_EQ(tree.size(), 1u);
        EXPECT_EQ(tree.text(tree[0]), row.text) << row.body;
    }
    // Objects have their places in memory, which start elsewhere in each run.
    const char objects[] =
        "local t = {} for i = 1, 50 do t[i % 2 == 0 and {} or function() return i "
        "end] = i end t[out], t[type] = 0, 51 for k, v in pairs(t) do "
        "out:number('v', v) end";
    const auto one = decoder(objects), other = decoder(objects);
    EXPECT_EQ(outcome(*one, hex("00")), outcome(*other, hex("00")));
    EXPECT_THAT(fault("next({}, 1)"), HasSubstr("not in the table"));
    EXPECT_THAT(fault("string.format('%10p', {})"), HasSubstr("invalid conversion"));
    EXPECT_THAT(fault("table.sort({ 1, 'a' })"), HasSubstr("attempt to compare"));
}

} // namespace
