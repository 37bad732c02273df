#include "tests/ArchiveBytes.h"
#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include "game/WQClientData.h"
#include "io/ZPSystemLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <malloc.h>

namespace {

constexpr std::uint32_t kOne = 0x3F800000, kTwo = 0x40000000; // the singles 1 and 2

/// A region record in which every list but one has an element. The ninth field of weather models,
/// where there is one, is 0x99.
ZPData regionRecord(bool hasNinthField) {
    ZPData heights;
    for (std::uint32_t index = 0; index < 256; ++index)
        ZPAppendLittleInt32(heights,
                            std::bit_cast<std::uint32_t>(static_cast<float>(index) * 1.5f));
    const ZPData weatherModel =
        joined({words({kOne, kTwo, kOne, kOne, kOne, kOne, 0x02000001, 0x33000001}),
                hasNinthField ? words({0x99}) : ZPData()});
    return joined(
        {words({0x13000000, 1, 2}),
         hex("0500 4465726574"), // "Deret", not aligned: all that follows lies on odd offsets
         words({255, 254, 0x41C00000, 192, 3, kOne, kTwo, kOne}), heights,
         words({0, 0x3FF80000, 8, kTwo, 360, 10, 11}),
         // times of day: padding follows the place in the record, so the first name needs none
         words({2, kOne, 1}), hex("0300 4461f9"), words({kTwo, 2}), hex("0100 4e 00"), words({1}),
         hex("0200 4d6f"), // one day, four bytes: no padding
         words({1, 90}), hex("0200 4a75"), words({12, 0, 0x3FF80000, 0, 0x40000000}),
         // weather types
         words({1, kTwo}), hex("0200 4f6b"), words({1}), weatherModel,
         words({1, kOne, kTwo, kOne, kOne, 21, kOne, 22, kOne, kOne, 23, 24}),
         words({1, 31, 32, kTwo, kOne, kTwo, kOne}),
         // reference sets, terrain objects
         words({1, 0x12000001, 2, 0xA1, kOne, kTwo, kOne, kTwo, 0xA2, kOne, kOne, kOne, kOne}),
         words({2, 0xB0, 2, 0xB1, 0xB2, 0xC0, 0}),
         // land types
         words({2}), hex("0200 4772 102030ff"), words({9, 0, 1, 2, 3, 4, 5, 6, 7, 8}),
         hex("0600 576174657272"), hex("00000001"), words({0}),
         // textures
         words({0xD1, 0xD2, 1, 1, 2, 0, 2, 3, 4, 5, 6}),
         words({1, 7, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7, 0xE8, 0xE9, 0xEA}),
         words({0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5})});
}

TEST(WorldInfo, WholeRecordWithEitherWeatherModel) {
    for (const std::uint32_t version : {1393u, 1394u, 1395u}) {
        const TemporaryFolder folder;
        const bool hasNinthField = version >= 1394;
        ArchiveBytes archive;
        archive.addFile(0x13000000, regionRecord(hasNinthField));
        archive.addFile(0xFFFF0001, words({version}));
        archive.writeToPath(folder / "client_portal.dat");
        CapturedLog captured;
        WQClientData clientData(folder.path());
        const WQWorldInfo *info = clientData.worldInfo();
        const std::string log = captured.take();
        ASSERT_NE(info, nullptr) << log;
        EXPECT_EQ(log.find("bytes left"), std::string::npos) << log;
        EXPECT_EQ(clientData.worldInfo(), info);

        EXPECT_EQ(info->fields().name, "Deret");
        EXPECT_EQ(info->fields().height, 254u);
        EXPECT_EQ(info->fields().squareLength, 24.0f);
        EXPECT_EQ(info->fields().unknown5, 2.0f);
        EXPECT_EQ(info->fields().unknown7, 1.5);
        EXPECT_EQ(info->fields().daysPerYear, 360u);
        EXPECT_EQ(info->fields().unknown14, 2.0);
        EXPECT_EQ(info->actualLandHeights()[255], 382.5f);
        ASSERT_EQ(info->times().size(), 2u);
        EXPECT_EQ(info->times()[0].name, "Daù");
        EXPECT_TRUE(info->times()[0].isNight);
        EXPECT_FALSE(info->times()[1].isNight); // the word is 2
        EXPECT_EQ(info->days(), std::vector<std::string>{"Mo"});
        EXPECT_EQ(info->months().at(0).startDayOfYear, 90u);
        const WQWeatherType weather = info->weatherTypes().at(0);
        EXPECT_EQ(weather.weatherModels.at(0).particleEffectIdentifier, 0x33000001u);
        EXPECT_EQ(weather.weatherModels.at(0).v9,
                  hasNinthField ? std::optional(0x99u) : std::nullopt);
        EXPECT_EQ(weather.weatherAnimationGroups.at(0).v4, 24u);
        EXPECT_EQ(weather.weatherAnimationGroups.at(0).weatherAnimationItems.at(0).unknown4.y, 2);

        ASSERT_EQ(info->landTypes().size(), 2u);
        EXPECT_EQ(info->landTypes()[1].identifier(), 1u);
        EXPECT_EQ(info->landTypes()[1].name(), "Waterr");
        const WQLandInfo::Color color = info->landTypes()[0].color();
        EXPECT_EQ(color.red, 0x30 / 255.0);
        EXPECT_EQ(color.green, 0x20 / 255.0);
        EXPECT_EQ(color.blue, 0x10 / 255.0);
        EXPECT_EQ(color.alpha, 1.0);
    }
}

TEST(WorldInfo, TextSections) {
    const TemporaryFolder folder;
    const ZPData record = regionRecord(false);
    const auto info = ZPRecordWithData<WQWorldInfo>(record, nullptr);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->t20RefString(), std::string(70, '-') +
                                        "\n  0: 12000001, count=2\n"
                                        "     0: 000000a1 1.000000 2.000000 1.000000 2.000000\n"
                                        "     1: 000000a2 1.000000 1.000000 1.000000 1.000000\n");
    EXPECT_EQ(info->terrainObjectsString(), "count: 2\n"
                                            "  0 (0x00): 000000b0  000000b1 000000b2\n"
                                            "  1 (0x01): 000000c0  \n");
    EXPECT_TRUE(info->landTypesString().starts_with(
        std::string(60, '-') + "\n                      identifier: 0 (0x00)\n"
                               "                            name: Gr\n"
                               "                           color: 30 20 10 ff\n"
                               "automatic terrain object indexes:\n"));
    EXPECT_NE(info->landTypesString().find(std::string(34, ' ') + "00 01 02 03 04 05 06 07\n" +
                                           std::string(34, ' ') + "08 " + std::string(60, '-')),
              std::string::npos)
        << info->landTypesString();
    EXPECT_EQ(info->landTexturesString(),
              "u1: 000000d1, u2: 000000d2\n"
              "\nblend 1, count: 1\n  0: 00000001 00000002\n"
              "\nblend 2, count: 0\n"
              "\nblend 3, count: 2\n  0: 00000003 00000004\n  1: 00000005 00000006\n"
              "\nLand type texture stuff (main and detail)\n"
              "  0 (  7): 000000e1  000000e2  000000e3 000000e4 000000e5 000000e6 000000e7 "
              "000000e8 000000e9 000000ea\n" +
                  std::string(70, '-') +
                  "\n  0: 000000f0\n  1: 000000f1\n  2: 000000f2\n  3: 000000f3\n"
                  "  4: 000000f4\n  5: 000000f5\n" +
                  ZPFormat("offset: %08zx, remaining: 0\n", record.size()));
    ASSERT_TRUE(info->saveToPath(folder / "dump", nullptr));
    std::string dump = textOfFile(folder / "dump");
    const std::size_t heights = dump.find("  0: 0.000000\n"), times = dump.find("\n---", heights);
    EXPECT_TRUE(dump.substr(0, times).ends_with("254: 381.000000\n255: 382.500000\n"));
    dump.erase(heights, times - heights);
    const std::string line = "\n" + std::string(70, '-') + "\n";
    EXPECT_EQ(dump, "identifier: 13000000\n"
                    "name: Deret\n"
                    "             unknown1: 00000001 (1)\n"
                    "             unknown2: 00000002 (2)\n"
                    "                width: 000000ff (255)\n"
                    "               height: 000000fe (254)\n"
                    "         squareLength: 24.000000\n"
                    "landblockSquareLength: 000000c0 (192)\n"
                    "             unknown3: 00000003 (3)\n"
                    "             unknown4: 1.000000\n"
                    "             unknown5: 2.000000\n"
                    "             unknown6: 1.000000\n"
                    "             unknown7: 1.500000\n"
                    "             unknown8: 00000008 (8)\n"
                    "             unknown9: 2.000000\n"
                    "          daysPerYear: 00000168 (360)\n"
                    "            unknown10: 0000000a (10)\n"
                    "            unknown11: 0000000b (11)\n"
                    "            unknown12: 0000000c (12)\n"
                    "            unknown13: 1.500000\n"
                    "            unknown14: 2.000000\n" +
                        line + "land heights\n" + line +
                        "times of day\n"
                        "1.000000  night  Daù\n2.000000  day  N\n" +
                        line + "days\nMo\n" + line + "months\n 90  Ju\n" + line +
                        "weather\n2.000000  Ok\n"
                        "  model 02000001, particle effect 33000001: 1.000000 2.000000 1.000000 "
                        "1.000000 1.000000 1.000000\n"
                        "  animation 00000015 00000016 00000017 00000018: 1.000000 2.000000 "
                        "1.000000 1.000000 1.000000 1.000000 1.000000\n"
                        "    0000001f 00000020 2.000000 (1.000000 2.000000 1.000000)\n" +
                        line + "reference sets\n" + info->t20RefString() + line +
                        "terrain objects\n" + info->terrainObjectsString() + line + "land types\n" +
                        info->landTypesString() + line + "land textures\n" +
                        info->landTexturesString());
}

TEST(WorldInfo, DamagedRecordsAreRefused) {
    ZPData record = regionRecord(false);
    CapturedLog captured;
    for (std::size_t length = 0; length < record.size(); ++length)
        EXPECT_FALSE(ZPRecordWithData<WQWorldInfo>(std::span(record).first(length), nullptr));
    // Any word may claim to count what is not there.
    for (std::size_t offset = 4; offset + 4 <= record.size(); ++offset) {
        ZPData damaged = record;
        std::memset(damaged.data() + offset, 0xFF, 4);
        (void)ZPRecordWithData<WQWorldInfo>(damaged, nullptr);
    }
}

TEST(WorldInfo, HeightsThatAreNoNumbersAreTold) {
    constexpr std::size_t kHeights = 12 + 7 + 32;
    ZPData record = regionRecord(false);
    const auto fault = [&record] {
        CapturedLog captured;
        return ZPRecordWithData<WQWorldInfo>(record, nullptr)->faultInLandHeights();
    };
    const auto setHeight = [&record](std::size_t index, float height) {
        std::memcpy(record.data() + kHeights + index * sizeof height, &height, sizeof height);
    };
    using Limits = std::numeric_limits<float>;
    setHeight(0, Limits::max());
    setHeight(1, Limits::denorm_min());
    EXPECT_EQ(fault(), "");
    const std::string end = "of the 256 land heights in the region record (13000000) are no finite "
                            "numbers, first that of index ";
    setHeight(255, -Limits::infinity());
    EXPECT_EQ(fault(), "1 " + end + "255");
    setHeight(17, Limits::infinity());
    setHeight(18, Limits::quiet_NaN());
    EXPECT_EQ(fault(), "3 " + end + "17");
    setHeight(0, Limits::quiet_NaN());
    EXPECT_EQ(fault(), "4 " + end + "0");
}

/// Bytes on the heap, those of large allocations included.
std::size_t memoryHeld() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Elements that are empty take 4 to 16 bytes of a record, and many times that as objects or text.
TEST(WorldInfo, ARecordOfAMillionElementsTakesLittleMoreThanItsBytes) {
    constexpr std::uint32_t kCount = 1 << 20;
    const ZPData plain = regionRecord(false);
    // The counts of the days, of the reference sets and of the land types: 4, 8 and 12 bytes each.
    const std::pair<ZPData, std::size_t> lists[] = {
        {joined({words({1}), hex("0200 4d6f")}), 4},
        {words({1, 0x12000001, 2}), 8},
        {joined({words({2}), hex("0200 4772 102030ff")}), 12}};
    for (const auto &[begin, size] : lists) {
        const auto at = std::ranges::search(plain, begin).begin();
        ASSERT_NE(at, plain.end());
        ZPData record(plain.begin(), at);
        ZPAppendLittleInt32(record, kCount);
        record.resize(record.size() + kCount * size);
        record.insert(record.end(), 4096, std::byte{0}); // all that follows is empty
        CapturedLog captured;
        const std::size_t before = memoryHeld();
        const auto info = ZPRecordWithData<WQWorldInfo>(record, nullptr);
        const std::size_t after = memoryHeld();
        ASSERT_TRUE(info);
        EXPECT_LT(after, before + record.size() + (1 << 20));
    }
}

} // namespace
