#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include "io/ZPMutableDataCursor.h"
#include "io/ZPText.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

std::string messageOf(const std::function<void()> &action) {
    try {
        action();
    } catch (const ZPRangeException &exception) {
        return exception.what();
    } catch (const ZPGenericException &exception) {
        return std::string("generic: ") + exception.what();
    }
    return "no exception";
}

TEST(DataCursor, IntegersAndFloatsInBothOrders) {
    const ZPData data = hex("01 0203 04050607 08090a0b0c0d0e0f");
    ZPDataCursor little(data), big(data);
    EXPECT_EQ(little.readByte(), 1);
    EXPECT_EQ(little.readLittleInt16(), 0x0302);
    EXPECT_EQ(little.readLittleInt32(), 0x07060504u);
    EXPECT_EQ(little.readLittleInt64(), 0x0f0e0d0c0b0a0908u);
    EXPECT_TRUE(little.isAtEnd());
    big.advanceByLength(1);
    EXPECT_EQ(big.readBigInt16(), 0x0203);
    EXPECT_EQ(big.readBigInt32(), 0x04050607u);
    EXPECT_EQ(big.readBigInt64(), 0x08090a0b0c0d0e0fu);

    // 1.5 in each form, then a quaternion stored with its real part first.
    const ZPData floats = hex("0000c03f 3fc00000 000000000000f83f"
                              "0000803f 00000000 00000000 00000040");
    ZPDataCursor cursor(floats);
    EXPECT_EQ(cursor.readLittleFloat32(), 1.5f);
    EXPECT_EQ(cursor.readBigFloat32(), 1.5f);
    EXPECT_EQ(cursor.readLittleFloat64(), 1.5);
    const ZPQuaternion rotation = cursor.readLittleQuaternion();
    EXPECT_EQ(rotation.w, 1);
    EXPECT_EQ(rotation.x, 0);
    EXPECT_EQ(rotation.z, 2);
}

TEST(DataCursor, NothingIsReadPastTheEnd) {
    const ZPData data = hex("00 01 02 03 04 05 06 07 08 09");
    const struct {
        std::uint64_t offset;
        std::function<void(ZPDataCursor &)> action;
        std::string message;
    } cases[] = {
        {9, [](auto &c) { c.readByte(); }, "no exception"},
        {10, [](auto &c) { c.readByte(); }, "readByte"},
        {9, [](auto &c) { c.readLittleInt16(); }, "readLittleInt16"},
        {6, [](auto &c) { c.readBigInt32(); }, "no exception"},
        {7, [](auto &c) { c.readBigInt32(); }, "readBigInt32"},
        {3, [](auto &c) { c.readLittleInt64(); }, "readLittleInt64"},
        {8, [](auto &c) { c.readLittleFloat32(); }, "readLittleFloat32"},
        {1, [](auto &c) { c.readDataWithLength(10); }, "readDataWithLength:"},
        {1, [](auto &c) { c.readDataWithLength(UINT64_MAX); }, "readDataWithLength:"},
        {1, [](auto &c) { c.peekDataWithLength(10); }, "peekDataWithLength:"},
        {0, [](auto &c) { c.readUUID(); }, "readUUID"},
        {3, [](auto &c) { c.readUTF16StringOfLength(4, true); }, "readUTF16StringOfLength:align:"},
        {3, [](auto &c) { c.wq_readStringOfLength(8, false); }, "wq_readStringOfLength:align:"},
        {3, [](auto &c) { c.wq_readStringOfLength(8, false, true); },
         "wq_readStringOfLength:align:swapNibbles:"},
        {0, [](auto &c) { c.setOffset(10); }, "no exception"},
        {4, [](auto &c) { c.setOffset(11); }, "seek"},
        {4, [](auto &c) { c.advanceByLength(UINT64_MAX); }, "seek"},
        {9, [](auto &c) { c.alignToFourByteBoundary(); }, "seek"}};
    for (const auto &c : cases) {
        ZPDataCursor cursor(data);
        cursor.setOffset(c.offset);
        const std::string message = messageOf([&] { c.action(cursor); });
        if (c.message == "no exception") {
            EXPECT_EQ(message, c.message);
            continue;
        }
        EXPECT_EQ(message, c.message == "seek"
                               ? "Trying to seek past end of data."
                               : "Trying to read past end in -[ZPDataCursor " + c.message + "]");
        EXPECT_EQ(cursor.offset(), c.offset) << c.message;
    }
}

TEST(DataCursor, Alignment) {
    const ZPData data(12);
    for (const auto &[from, two, four] : {std::array{4, 4, 4}, {5, 6, 8}, {6, 6, 8}, {7, 8, 8}}) {
        ZPDataCursor cursor(data);
        cursor.setOffset(static_cast<unsigned>(from));
        cursor.alignToTwoByteBoundary();
        EXPECT_EQ(cursor.offset(), static_cast<unsigned>(two));
        cursor.setOffset(static_cast<unsigned>(from));
        cursor.alignToFourByteBoundary();
        EXPECT_EQ(cursor.offset(), static_cast<unsigned>(four));
        EXPECT_TRUE(cursor.isOnFourByteBoundary());
    }
}

TEST(DataCursor, PackedIntegers) {
    using Read = std::function<std::uint32_t(ZPDataCursor &)>;
    const Read var30 = [](auto &c) { return c.wq_readPackedLittleInt30(); };
    const Read int15 = [](auto &c) { return c.wq_readLittleInt15(); };
    const Read wacky = [](auto &c) { return c.wq_readWackyInt15(); };
    const Read shortA = [](auto &c) { return c.wq_readPackedLittleInt32a(); };
    const Read shortB = [](auto &c) { return c.wq_readPackedLittleInt32(); };
    const struct {
        const char *bytes;
        Read read;
        std::uint32_t value;
    } cases[] = {{"7F", var30, 127},
                 {"8080", var30, 128},
                 {"BFFF", var30, 16383},
                 {"C0013412", var30, 0x00011234},
                 {"FFFFFFFF", var30, 0x3FFFFFFF},
                 {"7F", int15, 127},
                 {"8123", int15, 0x0123},
                 {"8123", wacky, 0x0123},
                 {"0123", wacky, 0x2301},
                 {"8001", wacky, 0x0001},
                 {"7F80", wacky, 0x807F},
                 {"FF7F", shortA, 0x7FFF},
                 {"01800200", shortA, 2},
                 {"008034127856", shortB, 0x1234},
                 {"", [](auto &c) { return c.wq_readPartialBigInt32(0); }, 0},
                 {"123456", [](auto &c) { return c.wq_readPartialBigInt32(3); }, 0x12345600}};
    for (const auto &c : cases) {
        const ZPData data = hex(c.bytes);
        ZPDataCursor cursor(data);
        EXPECT_EQ(c.read(cursor), c.value) << c.bytes;
        EXPECT_TRUE(cursor.isAtEnd()) << c.bytes;
    }
    // Written as short as can be: the reader would take longer forms as well.
    const std::pair<std::uint32_t, const char *> written[] = {
        {0, "00"},           {127, "7f"},
        {128, "8080"},       {16383, "bfff"},
        {16384, "c0000040"}, {0x12345678, "d2347856"},
        {65536, "c0010000"}, {0x3FFFFFFF, "ffffffff"}};
    for (const auto &[value, bytes] : written) {
        ZPMutableDataCursor writer;
        writer.wq_writePackedLittleInt30(value);
        EXPECT_EQ(ZPHexString(writer.data()), bytes);
        ZPDataCursor cursor(writer.data());
        EXPECT_EQ(cursor.wq_readPackedLittleInt30(), value);
    }
}

TEST(DataCursor, Strings) {
    using Read = std::function<std::string(ZPDataCursor &)>;
    const struct {
        const char *bytes;
        Read read;
        const char *text;
        std::uint64_t offset;
    } cases[] = {
        {"03 414280 ff", [](auto &c) { return c.wq_readLength8StringAndAlign(true); }, "AB€", 4},
        {"0200 41e9 00", [](auto &c) { return c.wq_readLength16StringAndAlign(true); }, "Aé", 4},
        {"0200 4142 00", [](auto &c) { return c.wq_readLength16StringAndAlign(false); }, "AB", 4},
        {"01000000 41", [](auto &c) { return c.wq_readLength32StringAndAlign(false); }, "A", 5},
        {"8001 41", [](auto &c) { return c.wq_readLength15StringAndAlign(false); }, "A", 3},
        {"8001 41 00", [](auto &c) { return c.wq_readLengthVar30StringAndAlign(true); }, "A", 4},
        {"0100 14", [](auto &c) { return c.wq_readNibbledLength16StringAndAlign(false); }, "A", 3},
        {"1424", [](auto &c) { return c.wq_readStringOfLength(2, false, true); }, "AB", 2},
        {"4142 0000", [](auto &c) { return c.wq_readStringOfLength(2, true, false); }, "AB", 4},
        {"02 3dd800de", [](auto &c) { return c.readLength8UTF16StringAndAlign(false); }, "😀", 5},
        {"02 3dd800de 000000", [](auto &c) { return c.readLength8UTF16StringAndAlign(true); }, "😀",
         8},
        {"01 4100", [](auto &c) { return c.wq_readLength15UTF16StringAndAlign(false); }, "A", 3},
        {"01 3dd8", [](auto &c) { return c.wq_readLengthVar30UTF16StringAndAlign(false); },
         "\xEF\xBF\xBD", 3}};
    for (const auto &c : cases) {
        const ZPData data = hex(c.bytes);
        ZPDataCursor cursor(data);
        EXPECT_EQ(c.read(cursor), c.text) << c.bytes;
        EXPECT_EQ(cursor.offset(), c.offset) << c.bytes;
    }
    const ZPData nibbled = hex("0200 1424 0000");
    ZPDataCursor nibbles(nibbled);
    ZPData stored = hex("40");
    EXPECT_EQ(nibbles.wq_readNibbledLength16StringAndAlign(false, stored), "AB");
    EXPECT_EQ(stored, hex("404142"));
    EXPECT_EQ(nibbles.offset(), 4u);
    // Lengths that no data stands behind.
    const ZPData huge = hex("ffffffffffffffff");
    ZPDataCursor cursor(huge);
    EXPECT_NE(messageOf([&] { cursor.wq_readLength32StringAndAlign(true); }), "no exception");
    cursor.setOffset(0);
    EXPECT_NE(messageOf([&] { cursor.readUTF16StringOfLength(UINT64_MAX / 2 + 2, false); }),
              "no exception");

    // Every byte survives the way through text; what the code page lacks does not.
    ZPData all;
    for (int value = 0; value < 256; ++value)
        all.push_back(static_cast<std::byte>(value));
    EXPECT_EQ(ZPWindows1252FromString(ZPStringFromWindows1252(all)), all);
    EXPECT_EQ(ZPWindows1252FromString("aЖ"), hex("613f"));
}

TEST(DataCursor, TraceLabels) {
    const ZPData data = words({0, 1, 2, 3, 4, 5, 6, 0x2a});
    ZPDataCursor cursor(data);
    cursor.setOffset(0x1c);
    cursor.setEnableLogging(true);
    testing::internal::CaptureStdout();
    cursor.readLittleInt32WithName("identifier");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "4 0000001c           identifier: 0000002a\n");
    EXPECT_EQ(ZPDataCursor::labelForOffset(6).substr(0, 2), "2 ");
    EXPECT_EQ(ZPDataCursor::labelForOffset(7).substr(0, 2), "1 ");
    EXPECT_EQ(cursor.labelWithName("abcdefghijklmnopqrstuvwxy"), "4 00000020 abcdefghijklmnopqrst");
    // In characters, however many bytes each takes; no byte that makes none is lost.
    cursor.setLabelWidth(4);
    EXPECT_EQ(cursor.labelWithName("é€"), "4 00000020   é€");
    EXPECT_EQ(cursor.labelWithName("é€😀abc"), "4 00000020 é€😀a");
    EXPECT_EQ(cursor.labelWithName("a\xff\xe2\x82"), "4 00000020 a\xff\xe2\x82");
    EXPECT_EQ(cursor.labelWithName("abcd"), "4 00000020 abcd");
    cursor.setLabelWidth(20);
    // The four characters of a code, whatever they are; a terminal takes no orders from them.
    cursor.setOffset(4);
    testing::internal::CaptureStdout();
    cursor.readFourCCWithName("code");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "4 00000004                 code: 01000000 - \\u{01}\\u{00}\\u{00}\\u{00}\n");
}

TEST(DataCursor, TracedReadsGiveAndShowTheValue) {
    const ZPData data = hex("8102038485060788 00000000 00000000");
    const struct {
        std::function<double(ZPDataCursor &)> read;
        double value;
        const char *shown;
        std::uint64_t offset;
    } cases[] = {
        {[](auto &c) { return c.readByteWithName("n"); }, 0x81, "81", 1},
        {[](auto &c) { return c.readLittleInt16WithName("n"); }, 0x0281, "0281", 2},
        {[](auto &c) { return c.readBigInt16WithName("n"); }, 0x8102, "8102", 2},
        {[](auto &c) { return c.readLittleInt32WithName("n"); }, 0x84030281, "84030281", 4},
        {[](auto &c) { return c.readBigInt32WithName("n"); }, 0x81020384, "81020384", 4},
        {[](auto &c) { return static_cast<double>(c.readLittleInt64WithName("n")); },
         static_cast<double>(0x8807068584030281), "8807068584030281  9801810284510380673", 8},
        {[](auto &c) { return static_cast<double>(c.readBigInt64WithName("n")); },
         static_cast<double>(0x8102038485060788), "8102038485060788", 8},
    };
    for (const auto &c : cases) {
        ZPDataCursor cursor(data);
        cursor.setEnableLogging(true);
        testing::internal::CaptureStdout();
        EXPECT_EQ(c.read(cursor), c.value) << c.shown;
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "4 00000000                    n: " + std::string(c.shown) + "\n");
        EXPECT_EQ(cursor.offset(), c.offset) << c.shown;
    }
    const ZPData floats = hex("0000c03f 000000000000f83f");
    ZPDataCursor cursor(floats);
    cursor.setEnableLogging(true);
    testing::internal::CaptureStdout();
    EXPECT_EQ(cursor.readLittleFloat32WithName("f"), 1.5f);
    EXPECT_EQ(cursor.readLittleFloat64WithName("d"), 1.5);
    cursor.setEnableLogging(false);
    cursor.setOffset(0);
    EXPECT_EQ(cursor.readByteWithName("silent"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "4 00000000                    f: 3fc00000 - 1.500000\n"
              "4 00000004                    d: 3ff8000000000000 - 1.500000\n");
}

TEST(DataCursor, BytesAndIdentifiersOfSixteen) {
    const ZPData data = hex("00112233445566778899aabbccddeeff 4142");
    ZPDataCursor cursor(data);
    const ZPUUID uuid = cursor.readUUID();
    EXPECT_EQ(ZPHexString(uuid), "00112233445566778899aabbccddeeff");
    ZPMutableDataCursor writer;
    writer.writeUUID(uuid);
    EXPECT_TRUE(std::ranges::equal(writer.data(), std::span(data).first(16)));
    ZPData collected = hex("40");
    cursor.readBytesOfLength(2, collected);
    EXPECT_EQ(collected, hex("404142"));
    cursor.setOffset(15);
    EXPECT_TRUE(cursor.description().ends_with(", length: 18, offset: 15"));
    EXPECT_NE(messageOf([&] { cursor.readUUID(); }), "no exception");
    EXPECT_NE(messageOf([&] { cursor.wq_readPartialBigInt32(5); }), "no exception");
    EXPECT_EQ(cursor.wq_readPartialBigInt32(3), 0xff414200u);
}

TEST(DataCursor, SkipsAndListsWholeWordsUpToTheEnd) {
    for (const auto &[size, count, listed] :
         {std::array{12u, 5u, 3u}, {12u, 3u, 3u}, {12u, 2u, 2u}, {11u, 5u, 2u}, {3u, 1u, 0u}}) {
        const ZPData data(size);
        ZPDataCursor cursor(data);
        CapturedLog captured;
        cursor.skip(count, true);
        EXPECT_EQ(countOf(captured.take(), ": 00000000 (0.000000)\n"), listed) << size;
        EXPECT_EQ(cursor.offset(), 4 * listed) << size;
    }
}

TEST(MutableDataCursor, PadsOnlyWhereAsked) {
    const std::pair<void (ZPMutableDataCursor::*)(std::string_view, bool), const char *> forms[] = {
        {&ZPMutableDataCursor::writeLength8UTF16String, "014100"},
        {&ZPMutableDataCursor::wq_writeVar30String, "0141"},
        {&ZPMutableDataCursor::wq_writeVar30UTF16String, "014100"}};
    for (const auto &[write, bytes] : forms) {
        ZPMutableDataCursor plain, padded;
        (plain.*write)("A", false);
        (padded.*write)("A", true);
        EXPECT_EQ(ZPHexString(plain.data()), bytes);
        EXPECT_EQ(ZPHexString(padded.data()), (std::string(bytes) + "0000").substr(0, 8));
    }
}

TEST(MutableDataCursor, WritesWhatTheCursorReads) {
    ZPMutableDataCursor writer;
    writer.writeByte(1);
    writer.alignToTwoByteBoundary();
    writer.writeBigInt16(0x0203);
    writer.writeLittleFloat64(1.5);
    writer.writeBigFloat32(1.5f);
    writer.writeLength8UTF16String("é", true);
    writer.wq_writeVar30String("A€", true);
    EXPECT_EQ(ZPHexString(writer.data()), "01000203"
                                          "000000000000f83f"
                                          "3fc00000"
                                          "01e90000"
                                          "02418000");
}

} // namespace
