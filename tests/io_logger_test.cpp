#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include "io/ZPAtomicFile.h"
#include "io/ZPLogger.h"
#include "io/ZPSHA1.h"

#include <gtest/gtest.h>

#include <cerrno>

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
    EXPECT_EQ(logger.outputString(), ">   abc 7\n"
                                     "\n"
                                     ">   clé: one\n"
                                     "\n"
                                     ">        two\n"
                                     "> end;");
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
    ZPLogger::initWithOutputToPath(directory / "log")->log("line");
    EXPECT_EQ(textOfFile(directory / "log"), "line\n");
}

TEST(AtomicFile, AppearsWholeOrNotAtAll) {
    const TemporaryFolder directory;
    const auto path = directory / "file";
    ASSERT_TRUE(ZPWriteTextToPath("old", path));
    {
        ZPAtomicFile file(path);
        ASSERT_TRUE(file.open());
        ASSERT_TRUE(file.write(hex("414243")));
        EXPECT_EQ(textOfFile(path), "old");
    }
    EXPECT_EQ(textOfFile(path), "old");
    ZPAtomicFile file(path);
    ASSERT_TRUE(file.open() && file.write(hex("414243")) && file.rewriteAtOffset(1, hex("62")) &&
                file.write(hex("44")) && file.commit());
    EXPECT_EQ(textOfFile(path), "AbCD");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path()), {}), 1);

    ZPError error;
    EXPECT_FALSE(ZPWriteTextToPath("new", directory / "missing/file", &error));
    EXPECT_EQ(error.code, ENOENT);
}

TEST(Extensions, TextsAndHashes) {
    EXPECT_EQ(ZPSHA1DigestString({}), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(ZPSHA1DigestString(hex("616263")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(ZPFourCCStringForValue(0x41424344), "ABCD");
    EXPECT_EQ(ZPStringForFlags(0x00A00001), "..a....1");
    EXPECT_EQ(ZPTimeFromSeconds(86400 * 1.5), " 1.50 days (129600.000000 seconds)");
    EXPECT_EQ(ZPTimeFromSeconds(86400 * 400.0), "1 years, 35.00 days (34560000.000000 seconds)");
    std::uint32_t value = 5;
    EXPECT_FALSE(ZPScanHexValue("xyz", value));
    EXPECT_TRUE(ZPScanHexValue(" 0x1F rest", value));
    EXPECT_EQ(value, 0x1Fu);
}

} // namespace
