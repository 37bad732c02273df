#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include "io/ZPChecksum.h"
#include "io/ZPLogger.h"
#include "io/ZPSHA1.h"
#include "io/ZPSHA256.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <unistd.h>

namespace {

TEST(Logger, IndentsLinesButNotEmptyOnes) {
    ZPLogger logger;
    logger.pushIndentation("> ");
    logger.pushIndentation("  ");
    logger.log("abc %d", 7);
    logger.log("%s", "");
    logger.logString("clé: ", "one\n\ntwo");
    logger.popIndentation();
    logger.setLineSuffix(";");
    logger.log("end");
    logger.pushIndentation("  ");
    logger.popAllIndentation();
    logger.log("all");
    EXPECT_TRUE(logger.indentations().empty());
    EXPECT_EQ(logger.outputString(), ">   abc 7\n"
                                     "\n"
                                     ">   clé: one\n"
                                     "\n"
                                     ">        two\n"
                                     "> end;all;");
}

TEST(Logger, DumpsBytes) {
    ZPData data(20);
    for (std::size_t index = 0; index < data.size(); ++index)
        data[index] = static_cast<std::byte>(0x70 + index);
    ZPLogger logger;
    logger.logData(data, "# ");
    std::string fill;
    for (int missing = 0; missing < 12; ++missing)
        fill += "   ";
    const std::string dump =
        "# 70 71 72 73 74 75 76 77 78 79 7a 7b 7c 7d 7e 7f  |pqrstuvwxyz{|}~.|\n"
        "# 80 81 82 83" +
        fill + "  |....|\n";
    EXPECT_EQ(logger.outputString(), dump);
    std::string text;
    ZPAppendHexDumpOfData(text, data, "# ");
    EXPECT_EQ(text, dump);
}

TEST(Logger, ToAFile) {
    const TemporaryFolder directory;
    ZPError error;
    EXPECT_EQ(ZPLogger::initWithOutputToPath(directory / "missing/log", &error), nullptr);
    EXPECT_EQ(error.domain, kZPPOSIXErrorDomain);
    EXPECT_EQ(error.code, ENOENT);
    // A longer file that was there leaves nothing behind, and no line waits in a buffer.
    std::ofstream(directory / "log") << "an older and longer text";
    const auto logger = ZPLogger::initWithOutputToPath(directory / "log");
    logger->log("line");
    EXPECT_EQ(textOfFile(directory / "log"), "line\n");
    EXPECT_TRUE(logger->flush());
}

TEST(Logger, TellsOfWhatItCannotWrite) {
    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "there is no device that is always full";
    const auto logger = ZPLogger::initWithOutputToPath("/dev/full");
    CapturedLog captured;
    logger->log("one");
    logger->log("two");
    const std::string said = captured.take();
    EXPECT_EQ(std::ranges::count(said, '\n'), 1);
    EXPECT_NE(said.find(ZPError::posix(ENOSPC).description()), said.npos);
    ZPError error;
    EXPECT_FALSE(logger->flush(&error));
    EXPECT_EQ(error.code, ENOSPC);

    // Of another stream it knows nothing yet, good or bad.
    const TemporaryFolder folder;
    const auto fileAt = [](const std::filesystem::path &path) {
        return std::unique_ptr<std::FILE, int (*)(std::FILE *)>(std::fopen(path.c_str(), "w"),
                                                                &std::fclose);
    };
    const auto sound = fileAt(folder / "log"), full = fileAt("/dev/full");
    logger->setOutputFileHandle(sound.get());
    logger->log("three");
    EXPECT_TRUE(logger->flush(&error));
    EXPECT_EQ(textOfFile(folder / "log"), "three\n");
    logger->setOutputFileHandle(full.get());
    logger->log("four");
    EXPECT_NE(captured.take(), "");
    EXPECT_FALSE(logger->flush(&error));
}

TEST(Logger, NamesTheReadThatADumpEndsIn) {
    const ZPData data(18);
    ZPDataCursor cursor(data);
    ZPLogger logger;
    try {
        logger.logBytesOfLength(20, cursor, "");
        ADD_FAILURE() << "read past the end";
    } catch (const ZPRangeException &exception) {
        EXPECT_STREQ(exception.what(), "Trying to read past end in -[ZPDataCursor readByte]");
    }
    EXPECT_EQ(std::ranges::count(logger.outputString(), '\n'), 1);
    EXPECT_TRUE(cursor.isAtEnd()); // byte by byte to the first that is missing
    EXPECT_THROW(logger.popIndentation(), ZPGenericException);
}

TEST(SystemLog, EscapesWhatATerminalWouldObey) {
    const std::pair<std::string_view, const char *> cases[] = {
        {"tab\tline\n é 😀 \\n", "tab\\tline\\n é 😀 \\\\n"},
        {std::string_view("a\0b", 3), "a\\u{00}b"},
        {"\x1b[31mred\x7f", "\\u{1b}[31mred\\u{7f}"},
        // The C1 form of the same command, and a letter beside it.
        {"\u009b31m \u00a0", "\\u{9b}31m \u00a0"},
        // What would turn the text round, and a character beside it.
        {"a\u202ecod.exe \u202f", "a\\u{202e}cod.exe \u202f"},
        {"\xe9t\xe9 \xe2\x82", "\\xe9t\\xe9 \\xe2\\x82"}};
    for (const auto &[text, escaped] : cases)
        EXPECT_EQ(ZPEscapedText(text), escaped);

    // Each range of harmful characters to its ends, and what lies beside it.
    const std::pair<char16_t, char16_t> ranges[] = {{0x0000, 0x001F}, {0x007F, 0x009F},
                                                    {0x061C, 0x061C}, {0x200E, 0x200F},
                                                    {0x2028, 0x202E}, {0x2066, 0x206F}};
    const auto isEscaped = [](char16_t character) {
        const std::string text = ZPStringFromUTF16({&character, 1});
        return ZPEscapedText(text) != text;
    };
    for (const auto &[first, last] : ranges) {
        EXPECT_TRUE(isEscaped(first) && isEscaped(last)) << std::hex << unsigned{first};
        EXPECT_FALSE(first > 0 && isEscaped(static_cast<char16_t>(first - 1)))
            << std::hex << unsigned{first};
        EXPECT_FALSE(isEscaped(static_cast<char16_t>(last + 1))) << std::hex << unsigned{last};
    }

    // Of one mind about what is plain, at any place of a text.
    const std::string lines = "line\n\tof a \\ program's own\n";
    EXPECT_TRUE(ZPIsPlainText(lines));
    EXPECT_EQ(ZPPrintableText(lines), lines);
    for (std::size_t place = 0; place < lines.size(); ++place) {
        std::string odd = lines;
        odd[place] = '\x1b';
        EXPECT_FALSE(ZPIsPlainText(odd));
        EXPECT_EQ(ZPPrintableText(odd), odd.substr(0, place) + "\\u{1b}" + odd.substr(place + 1));
    }
    EXPECT_EQ(ZPPrintableJSON("{\"é\u202e\u009b\x7f\\n\xe9\ufffd\":\n1}"),
              "{\"é\\u202e\\u009b\\u007f\\n\\ufffd\\ufffd\":\n1}");

    const auto logged = [](const std::string &text) {
        CapturedLog captured;
        ZPLog("%s", text.c_str());
        return captured.take();
    };
    EXPECT_TRUE(logged("a\x1b]0;b\x07\nc\t\\d").ends_with("] a\\u{1b}]0;b\\u{07}\nc\t\\d\n"));
    EXPECT_TRUE(logged(std::string(70000, 'x')).ends_with("xxx... and 4464 bytes more\n"));
}

TEST(Extensions, UTF8IsValidUpToTheEndsOfItsRanges) {
    // The last of each length, the first of the next, and the same written too long.
    for (const char *valid :
         {"\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80",
          "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x80\x80\x80", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_TRUE(ZPIsValidUTF8(valid)) << valid;
        EXPECT_EQ(ZPStringFromUTF16(ZPUTF16FromString(valid)), valid);
    }
    for (const char *invalid :
         {"\x80", "\xc1\xbf", "\xc2", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xed\xbf\xbf",
          "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80"})
        EXPECT_FALSE(ZPIsValidUTF8(invalid)) << invalid;
}

TEST(Extensions, TextsAndHashes) {
    EXPECT_EQ(ZPSHA1DigestString({}), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(ZPSHA1DigestString(hex("616263")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    // Lengths about the last place where the length fits into the block as well.
    for (const auto &[length, sha1, sha256] :
         {std::tuple{55, "c1c8bbdc22796e28c0e15163d20899b65621d65a",
                     "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
          {56, "c2db330f6083854c99d4b5bfb6e8f29f201be699",
           "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a"},
          {64, "0098ba824b5c16427bd7a1122a5a442a25ec644d",
           "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
          {1000, "291e9a6c66994949b57ba5e650361e98fc36b1ba",
           "41edece42d63e8d9bf515a9ba6932e1c20cbc9f5a5d134645adb5db1b9737ea3"}}) {
        const ZPData message(static_cast<std::size_t>(length), std::byte{'a'});
        EXPECT_EQ(ZPSHA1DigestString(message), sha1) << length;
        EXPECT_EQ(ZPHexString(ZPSHA256DigestOfData(message)), sha256) << length;
    }
    // Two pieces as one; sums that pass 2^16 and 2^32.
    const ZPData ones(70000, std::byte{0xFF});
    const std::span<const std::byte> all = ones;
    EXPECT_EQ(ZPCRC32(ZPCRC32(0, all.first(3)), all.subspan(3)), 0x80F95A0Au);
    EXPECT_EQ(ZPAdler32(ZPAdler32(1, all.first(6000)), all.subspan(6000)), 0x2A286E81u);
    EXPECT_EQ(ZPFourCCStringForValue(0x41424344), "ABCD");
    EXPECT_EQ(ZPStringForFlags(0x00A00001), "..a....1");
    EXPECT_EQ(ZPTimeFromSeconds(86400 * 1.5), " 1.50 days (129600.000000 seconds)");
    EXPECT_EQ(ZPTimeFromSeconds(86400 * 364.0), "364.00 days (31449600.000000 seconds)");
    EXPECT_EQ(ZPTimeFromSeconds(86400 * 365.0), "1 years,  0.00 days (31536000.000000 seconds)");
    EXPECT_EQ(ZPTimeFromSeconds(86400 * 400.0), "1 years, 35.00 days (34560000.000000 seconds)");
    EXPECT_EQ(ZPTimeFromMilliseconds(129600500), " 1.50 days (129600.500000 seconds)");
    std::string text = "a";
    ZPIndentToLevel(text, 2);
    EXPECT_EQ(text + ZPSpacesOfLength(1) + "b", "a     b");
    ZPData bytes;
    ZPAppendBigInt16(bytes, 0x0102);
    ZPAppendBigInt32(bytes, 0x03040506);
    ZPAppendLittleInt16(bytes, 0x0807);
    ZPAppendLittleInt32(bytes, 0x0C0B0A09);
    EXPECT_EQ(bytes, hex("0102 03040506 0708 090a0b0c"));
    ZPAlignToFourByteBoundary(bytes); // as it is
    bytes.pop_back();
    ZPAlignToFourByteBoundary(bytes);
    EXPECT_EQ(bytes, hex("0102 03040506 0708 090a0b00"));
    std::uint32_t value = 5;
    EXPECT_FALSE(ZPScanHexValue("xyz", value));
    EXPECT_TRUE(ZPScanHexValue(" 0x1F rest", value));
    EXPECT_EQ(value, 0x1Fu);
    EXPECT_TRUE(ZPScanHexValue("FFFFFFFF", value));
    EXPECT_EQ(value, 0xFFFFFFFFu);
    value = 5;
    EXPECT_TRUE(ZPScanHexValue("100000000", value));
    EXPECT_EQ(value, 0xFFFFFFFFu);
}

} // namespace
