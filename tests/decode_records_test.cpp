// Decoders in C++.

#include "decode/WQDecoderSet.h"
#include "decode/ZPRecordTreeText.h"
#include "game/WQClientData.h"
#include "io/ZPLogSink.h"
#include "io/ZPMutableDataCursor.h"
#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include <cmath>
#include <fstream>
#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

TEST(RecordDecoders, LandBlockHasEveryBitWhereItStands) {
    ZPMutableDataCursor record;
    record.writeLittleInt32(0x1234FFFF);
    record.writeLittleInt32(1);
    for (unsigned vertex = 0; vertex < 81; ++vertex)
        record.writeLittleInt16(vertex == 10 ? 0b10101'1001'01110'10 : 0);
    for (unsigned vertex = 0; vertex < 81; ++vertex)
        record.writeByte(static_cast<std::uint8_t>(vertex));
    record.writeByte(0xEE);

    const WQDecoderSet set;
    WQDecoders decoders(set, {});
    ZPRecordDecoder *decoder = decoders.decoderFor({ZPGorvaneGame::first, "WQLandBlock"});
    ASSERT_NE(decoder, nullptr);
    ZPRecordTree tree;
    const auto result = ZPDecodeRecord(*decoder, record.data(), tree);
    EXPECT_FALSE(result.fault);
    EXPECT_EQ(result.bytesLeft, 0u);
    EXPECT_THAT(ZPRecordTreeText(tree, true),
                HasSubstr("0000001c     2    [10]: 4 values\n"
                          "0000001c     2      road: 2 [bits 0-1]\n"
                          "0000001c     2      terrain: 14 [bits 2-6]\n"
                          "0000001c     2      unknown: 9 [bits 7-10]\n"
                          "0000001c     2      terrainObjects: 21 [bits 11-15]\n"));
    EXPECT_THAT(ZPRecordTreeText(tree, true), HasSubstr("000000fa     1    [80]: 80\n"
                                                        "000000fb     1  padding: 0xee\n"));

    ZPData tooShort = record.data();
    tooShort.pop_back();
    EXPECT_TRUE(ZPDecodeRecord(*decoder, tooShort, tree).fault);
    tooShort.resize(254);
    EXPECT_EQ(ZPDecodeRecord(*decoder, tooShort, tree).bytesLeft, 2u);
}

/// The tree of the sample world's region record against the record's own class, which reads it in
/// its own way.
TEST(RecordDecoders, RegionRecordIsReadToItsEndInEitherVersion) {
    ZPSetLogSink([](std::string_view) {});
    WQClientData client(PLOTTERRA_SAMPLE_WORLD);
    const auto *entry = client.portalDataFile()->fileEntryWithIdentifier(0x13000000);
    ASSERT_NE(entry, nullptr);
    const auto data = client.portalDataFile()->readDataForFileEntry(*entry);
    const WQWorldInfo *info = client.worldInfo();
    ZPSetLogSink(nullptr);
    ASSERT_TRUE(data && info != nullptr);

    const WQDecoderSet set;
    WQDecoders decoders(set, {client.portalDataFile()->dataVersion()->version()});
    const WQRecordKind kind{ZPGorvaneGame::first, "WQWorldInfo", 0x13};
    ZPRecordTree tree;
    const auto result = ZPDecodeRecord(*decoders.decoderFor(kind), *data, tree);
    EXPECT_FALSE(result.fault) << result.fault->message;
    EXPECT_EQ(result.bytesLeft, 0u);
    const std::string text = ZPRecordTreeText(tree, false);
    EXPECT_THAT(text, HasSubstr("landTypes: list of " + std::to_string(info->landTypes().size())));
    for (const WQLandInfo &landType : info->landTypes())
        EXPECT_THAT(text, HasSubstr("name: \"" + landType.name() + "\""));
    EXPECT_THAT(text, HasSubstr("startDayOfYear: 330"));
    // Colours lie in the file from blue to alpha.
    std::vector<std::pair<std::string_view, std::uint64_t>> colours, expected;
    for (std::uint32_t place = 0; place < tree.size(); ++place)
        if (tree.name(tree[place]) == "color")
            for (std::uint32_t part = place + 1; part < tree[place].end; ++part)
                colours.emplace_back(tree.name(tree[part]), tree[part].number);
    for (const WQLandInfo &landType : info->landTypes()) {
        const auto &colour = landType.color();
        for (const auto &[name, part] :
             {std::pair{"blue", colour.blue}, std::pair{"green", colour.green},
              std::pair{"red", colour.red}, std::pair{"alpha", colour.alpha}})
            expected.emplace_back(name, static_cast<std::uint64_t>(std::lround(part * 255)));
    }
    EXPECT_EQ(colours, expected);

    // Exactly 1 means night: what the class makes of another word, the tree does too.
    ZPData changed = *data;
    std::size_t nights = 0;
    for (std::uint32_t place = 0; place < tree.size(); ++place)
        if (const ZPRecordValue &value = tree[place]; tree.name(value) == "isNight") {
            nights += value.number != 0;
            changed[value.range.offset] = std::byte{2};
        }
    EXPECT_GT(nights, 0u);
    EXPECT_EQ(nights, std::ranges::count(info->times(), true, &WQTimeOfDay::isNight));
    EXPECT_FALSE(ZPDecodeRecord(*decoders.decoderFor(kind), changed, tree).fault);
    EXPECT_THAT(ZPRecordTreeText(tree, false), testing::Not(HasSubstr("isNight: true")));

    // Before data version 1394 weather models were shorter, and this record makes no sense.
    WQDecoders oldDecoders(set, {1393});
    const auto oldResult = ZPDecodeRecord(*oldDecoders.decoderFor(kind), *data, tree);
    EXPECT_TRUE(oldResult.fault || oldResult.bytesLeft > 0);
}

using Game = ZPGorvaneGame;

class DecoderSet : public testing::Test {
  protected:
    void write(const std::string &name, const std::string &fields, const char *value = "1") {
        std::filesystem::create_directories((_folder / name).parent_path());
        std::ofstream(_folder / name)
            << "return { name = 'N', " << fields << ", decode = function(cursor, out) "
            << "out:number('v', " << value << ") end }";
    }
    WQDecoderSet load(const std::vector<std::string> &folders) {
        WQDecoderSet set;
        for (const std::string &folder : folders)
            EXPECT_TRUE(set.addFolder(_folder / folder));
        return set;
    }

    TemporaryFolder _folder;
};

TEST_F(DecoderSet, AFileIsForTheTypesClassesAndGamesThatItNames) {
    write("own/a.lua", "types = { 0x41 }, games = { 'ostvale2' }", "2");
    write("own/b.lua", "classes = { 'WQPalette', 'WQLandBlock' }");
    write("own/c.txt", "types = { 0x41 }");
    write("more/d.lua", "types = { 4, 0x41 }, games = { 'ostvale', 'ostvale2' }");
    const WQDecoderSet set = load({"own", "more"});
    const struct {
        WQRecordKind kind;
        const char *file;
    } cases[] = {
        {{Game::first, "", 0x41}, "d.lua"},         {{Game::second, "", 0x41}, "a.lua"},
        {{Game::firstRetail, "", 0x41}, nullptr},   {{Game::first, "WQPalette", 4}, "b.lua"},
        {{Game::second, "", 4}, "d.lua"},           {{Game::first, "WQImage", 4}, "d.lua"},
        {{Game::first, "WQLandBlock"}, nullptr},    {{Game::first, "WQObjectBlock"}, nullptr},
        {{Game::first, "WQWorldInfo", 4}, nullptr}, {{Game::first, ""}, nullptr},
    };
    for (const auto &row : cases) {
        const auto file = set.fileFor(row.kind);
        EXPECT_EQ(file ? set.files()[*file].path.filename().string() : "",
                  row.file != nullptr ? row.file : "")
            << ZPGorvaneGameKey(row.kind.game) << row.kind.className << row.kind.type.value_or(0);
    }
    EXPECT_EQ(set.nameOf({Game::first, "", 0x41}), "N");
    EXPECT_EQ(set.nameOf({Game::first, "WQImage", 0x41}), "WQImage");
    // The file may go once it was read.
    std::filesystem::remove_all(_folder / "own");
    WQDecoders decoders(set, {});
    ZPRecordTree tree;
    ASSERT_NE(decoders.decoderFor({Game::second, "", 0x41}), nullptr);
    EXPECT_FALSE(ZPDecodeRecord(*decoders.decoderFor({Game::second, "", 0x41}), {}, tree).fault);
    EXPECT_EQ(ZPRecordTreeText(tree, false), "v: 2\n");
    EXPECT_EQ(decoders.decoderFor({Game::first, "WQImage", 6}), nullptr);
}

TEST_F(DecoderSet, WhatCannotTakeEffectIsRemarkedOn) {
    write("own/a.lua", "classes = { 'WQDungeonBlok', 'WQDungeonBlock', 'WQVersion' }");
    write("own/b.lua", "types = { 0x13, 0x14 }");
    write("own/c.lua", "types = { 0x13 }, games = { 'ostvale2' }");
    std::ofstream(_folder / "own/d.lua") << "return {";
    const WQDecoderSet set = load({"own"});
    ASSERT_EQ(set.files().size(), 4u);
    EXPECT_EQ(set.files()[0].remark, "WQDungeonBlok is no record class, WQVersion is decoded by "
                                     "the program itself");
    EXPECT_EQ(set.files()[1].remark, "WQWorldInfo is decoded by the program itself");
    EXPECT_EQ(set.files()[2].remark, "");
    EXPECT_THAT(set.files()[3].fault, HasSubstr("d.lua:1: "));
    EXPECT_FALSE(WQDecoderSet().addFolder(_folder / "none"));
}

} // namespace
