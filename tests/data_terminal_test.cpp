// What records and names hold reaches a terminal, a table or a program that reads JSON as text and
// as nothing else, on every way there.

#include "io/ZPText.h"
#include "tests/DataProgram.h"
#include "tests/FamilyArchive.h"
#include "tests/PatchedWorld.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

const std::string kWorld = PLOTTERRA_SAMPLE_WORLD;

class DataTerminal : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directory(_folder / "decoders");
        // The first file's number is the second's choice.
        std::ofstream(_folder / "decoders/mine.lua")
            << "return { name = 'Mine', types = { 0x42 }, decode = function(cursor, out)\n"
               "  out:identifier(cursor:readLittleInt32())\n"
               "  local n = cursor:readByte()\n"
               "  out:number('a\\27\\n\\tb\\\\', n, { [1] = 'o\\27', [2] = 't\\u{202e}' })\n"
               "  out:flags('f', n, { [0] = 'bit\\u{9b}' })\n"
               "  out:text('t\\u{61c}', 'x\\u{9b}31m\\u{2066}\\127é')\n"
               "end }\n";
        for (const auto &[name, byte] : {std::pair{"x.dat", "01"}, std::pair{"y.dat", "02"}}) {
            FamilyArchive made(3);
            made.addFile(0x42000001, hex(std::string("01000042") + byte));
            made.finish();
            made.writeToPath(_folder / name);
        }
    }
    ProgramRun dataHere(std::vector<std::string> words) {
        words.insert(words.begin(), {"--decoders", _folder / "decoders"});
        return data(words);
    }

    TemporaryFolder _folder;
};

TEST_F(DataTerminal, NamesAndTextsOfRecordsAreEscaped) {
    const std::string x = _folder / "x.dat", y = _folder / "y.dat";
    const std::string tree = "identifier: 42000001\n"
                             R"(a\u{1b}\n\tb\\: 1 (o\u{1b}))"
                             "\n"
                             R"(f: .1 (bit\u{9b}))"
                             "\n"
                             R"(t\u{61c}: "x\u{9b}31m\u{2066}\u{7f}é")"
                             "\n";
    const std::string json = R"({"identifier":"0x42000001",)"
                             R"("a\u001B\n\tb\\":{"value":1,"name":"o\u001B"},)"
                             R"("f":{"value":"0x01","set":["bit\u009b"]},)"
                             R"("t\u061c":"x\u009b31m\u2066\u007fé"})"
                             "\n";
    EXPECT_EQ(dataHere({"cat", "--text", x, "42000001"}).output, tree);
    EXPECT_EQ(dataHere({"cat", "--json", x, "42000001"}).output, json);
    EXPECT_EQ(dataHere({"extract", "--text", x, _folder / "out"}).status, 0);
    EXPECT_EQ(dataHere({"extract", "--json", x, _folder / "out"}).status, 0);
    EXPECT_EQ(textOfFile(_folder / "out/Mine/42000001.txt"), tree);
    EXPECT_EQ(textOfFile(_folder / "out/Mine/42000001.json"), json);
    const std::string field = R"(a\u{1b}\n\tb\\)", before = R"(1 (o\u{1b}))",
                      after = R"(2 (t\u{202e}))";
    EXPECT_THAT(dataHere({"diff", "--records", x, y}).output,
                HasSubstr("    " + field + ": " + before + " => " + after + "\n"));
    EXPECT_THAT(dataHere({"diff", "--records", "--format", "tsv", x, y}).output,
                HasSubstr("\tMine\t" + before + "\t" + after + "\t" + field + "\n"));
}

TEST_F(DataTerminal, WhatAClassOfItsOwnDumpsIsEscapedAndBytesAreNot) {
    // A land type's name, everywhere it stands, becomes one of the same length.
    const std::string_view name = "Barren Rock", hostile = "\x1b[31m\x81]]>&<";
    const std::string world = patchedWorld(_folder / "world", kWorld, [&](std::string &portal) {
        for (std::size_t at = 0; (at = portal.find(name, at)) != portal.npos;)
            portal.replace(at, hostile.size(), hostile);
    });
    const std::string shown = R"(\u{1b}[31m\u{81}]]>&<)";
    const std::string text = data({"cat", "--text", world, "13000000"}).output;
    EXPECT_THAT(text, HasSubstr("name: " + shown + "\n"));
    EXPECT_TRUE(ZPPrintableText(text) == text);
    EXPECT_THAT(data({"cat", world, "13000000"}).output, HasSubstr(hostile));

    // Beside a raster, well-formed; and it goes with the raster that it describes.
    const std::string raster = _folder / "t.tif", names = raster + ".aux.xml";
    EXPECT_EQ(data({"export", world, "types", raster}).status, 0);
    EXPECT_THAT(textOfFile(names),
                HasSubstr(R"(<Category>\u{1b}[31m\u{81}]]&gt;&amp;&lt;</Category>)"));
    EXPECT_EQ(data({"export", world, "heights", raster}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(names));
    std::ofstream(names) << "a text of the user's";
    EXPECT_EQ(data({"export", world, "heights", raster}).status, 0);
    EXPECT_EQ(textOfFile(names), "a text of the user's");
}

TEST_F(DataTerminal, WhatTheCommandLineQuotesIsEscaped) {
    const std::string odd = "\x1b[31m\u202e\xff";
    for (const std::vector<std::string> &words : {std::vector<std::string>{"list", odd},
                                                  {"--" + odd},
                                                  {odd},
                                                  {"list", "--format", odd, kWorld},
                                                  {"diff", "--land", kWorld, _folder / odd}}) {
        const ProgramRun run = data(words);
        EXPECT_NE(run.status, 0);
        EXPECT_THAT(run.log, HasSubstr(R"(\u{1b}[31m\u{202e}\xff)"));
        EXPECT_TRUE(ZPPrintableText(run.log) == run.log) << words[0];
    }
    EXPECT_THAT(data({"--version"}).output, testing::MatchesRegex("plotterra-data [0-9.]+\n"));
}

TEST_F(DataTerminal, ProgressKeepsToItsLine) {
    const std::string check = " " PLOTTERRA_DATA_PROGRAM " check --type 4 " + kWorld;
    const auto shownAt = [&](int columns) {
        return runOnTerminal("stty cols " + std::to_string(columns) + "; TERM=xterm" + check);
    };
    if (!shownAt(80))
        GTEST_SKIP() << "there is no terminal to be had";
    EXPECT_THAT(shownAt(80)->output, HasSubstr("\rdecoding "));
    const std::string narrow = shownAt(12)->output;
    EXPECT_THAT(narrow, testing::ContainsRegex("\rdecoding [0-9][0-9]\x1b.K"));
    EXPECT_EQ(narrow.find(" of "), narrow.npos);
}

} // namespace
