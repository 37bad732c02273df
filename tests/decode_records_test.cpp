// Decoders in C++.

#include "decode/WQDecoderSet.h"
#include "decode/ZPRecordTreeText.h"
#include "game/WQClientData.h"
#include "io/ZPLogSink.h"
#include "io/ZPMutableDataCursor.h"
#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

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
    ZPRecordDecoder *decoder = decoders.decoderFor({"WQLandBlock", std::nullopt});
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
    const WQRecordKind kind{"WQWorldInfo", 0x13};
    ZPRecordTree tree;
    const auto result = ZPDecodeRecord(*decoders.decoderFor(kind), *data, tree);
    EXPECT_FALSE(result.fault) << result.fault->message;
    EXPECT_EQ(result.bytesLeft, 0u);
    const std::string text = ZPRecordTreeText(tree, false);
    EXPECT_THAT(text, HasSubstr("landTypes: list of " + std::to_string(info->landTypes().size())));
    for (const WQLandInfo &landType : info->landTypes())
        EXPECT_THAT(text, HasSubstr("name: \"" + landType.name() + "\""));
    EXPECT_THAT(text, HasSubstr("startDayOfYear: 330"));

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

} // namespace
