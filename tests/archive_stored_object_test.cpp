#include "tests/TestBytes.h"
#include "tests/TestSupport.h"

#include "archive/ZPGorvaneBlockStorage.h"
#include "archive/ZPGorvaneStoredObject.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/stat.h>

namespace {

/// Says that it was saved where nothing is.
class LostRecord final : public ZPGorvaneStoredObject {
  public:
    LostRecord() : ZPGorvaneStoredObject(0x06000001u) {}
    using ZPGorvaneStoredObject::saveToPath;
    bool saveToPath(const std::filesystem::path &, ZPError *) const override { return true; }
};

TEST(StoredObject, SavesItsDumpWithTheTimeOfItsFile) {
    const TemporaryFolder folder;
    const ZPData data = words({0x06000001});
    ZPDataCursor dataCursor(data);
    ZPGorvaneStoredObject record(dataCursor, nullptr);
    ZPError error;
    EXPECT_FALSE(record.saveToPath(folder / "dump", 1234567890, &error));
    EXPECT_EQ(error.domain, kZPGorvaneStorageErrorDomain);
    EXPECT_TRUE(error.userInfo.empty());
    EXPECT_FALSE(std::filesystem::exists(folder / "dump"));

    record.appendFormat("line %d", 1);
    EXPECT_TRUE(record.saveToPath(folder / "dump", 1234567890, &error));
    struct stat status {};
    stat((folder / "dump").c_str(), &status);
    EXPECT_EQ(status.st_mtime, 1234567890);
    EXPECT_EQ(status.st_atime, 1234567890);
    EXPECT_EQ(status.st_mtim.tv_nsec + status.st_atim.tv_nsec, 0);
    EXPECT_EQ(textOfFile(folder / "dump"), "line 1\n");
    const ZPData values = words({0x12, 0xABCDEF01, 3});
    ZPDataCursor cursor(values);
    record.appendValues(2, cursor);
    EXPECT_EQ(record.outputString(), "line 1\n00000012 abcdef01\n");
    EXPECT_EQ(cursor.offset(), 8u);
    EXPECT_THROW(record.appendValues(2, cursor), ZPRangeException);
    // A record that was not read from data has nothing to collect lines in.
    ZPGorvaneStoredObject unread(0x06000001);
    unread.appendFormat("line %d", 1);
    EXPECT_EQ(unread.outputString(), "");
    EXPECT_FALSE(unread.saveToPath(folder / "unread"));

    // The word has no sign: half of it lies past 2038.
    EXPECT_TRUE(record.saveToPath(folder / "dump", 0xF0000000, &error));
    stat((folder / "dump").c_str(), &status);
    EXPECT_EQ(status.st_mtime, 0xF0000000);
    EXPECT_EQ(status.st_atime, 0xF0000000);

    EXPECT_FALSE(record.setModificationDate(1234567890, folder / "none", &error));
    EXPECT_EQ(error.domain, kZPPOSIXErrorDomain);
    EXPECT_EQ(error.code, ENOENT);

    ASSERT_FALSE(LostRecord().saveToPath(folder / "none", 1234567890, &error));
    EXPECT_EQ(error.domain, kZPGorvaneStorageErrorDomain);
    EXPECT_EQ(error.code, ZPGorvaneStorageErrorGeneral);
    const auto cause = error.userInfo.find(NSUnderlyingErrorKey);
    ASSERT_NE(cause, error.userInfo.end());
    const auto &underlying = std::get<std::shared_ptr<const ZPError>>(cause->second);
    EXPECT_EQ(underlying->domain, kZPPOSIXErrorDomain);
    EXPECT_EQ(underlying->code, ENOENT);
    EXPECT_EQ(error.description(), "Error Domain=ZPGorvaneStorageErrorDomain Code=0 (Error "
                                   "Domain=POSIXErrorDomain Code=2 \"No such file or directory\")");
}

} // namespace
