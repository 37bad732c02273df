// Who may be written over. The gate remembers for as long as the process lives, so each test has
// names of its own.

#include "io/ZPAtomicFile.h"
#include "io/ZPInputFile.h"
#include "io/ZPOutputGate.h"
#include "tests/TestSupport.h"

#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class OutputGate : public testing::Test {
  protected:
    void SetUp() override {
        for (const char *name : {"input", "other", "free"})
            std::ofstream(folder / name) << name;
        std::filesystem::create_directory(folder / "below");
        ZPNoteInput(folder / "input");
        ZPNoteInput(folder / "missing input");
        ASSERT_TRUE(ZPAnnounceOutput(folder / "other"));
        ASSERT_TRUE(ZPAnnounceOutput(folder / "new"));
    }
    void TearDown() override { ZPSetOutputGuard(nullptr); }

    static int codeOf(const std::filesystem::path &path) {
        ZPError error;
        if (ZPMayWrite(path, &error))
            return 0;
        EXPECT_EQ(error.domain, kZPOutputErrorDomain);
        EXPECT_FALSE(ZPWriteTextToPath("lost", path));
        return error.code;
    }

    TemporaryFolder folder;
};

TEST_F(OutputGate, KeepsInputsAndOtherOutputsThroughAnyLink) {
    const auto link = [&](const char *to, const char *name) {
        std::filesystem::create_symlink(to, folder / name);
    };
    link("input", "link");
    link("link", "chain");
    link("../input", "below/link");
    link("below", "folder");
    link("missing input", "dangling");
    link("free", "link to free");
    link("nothing", "link to nothing");
    std::filesystem::create_hard_link(folder / "input", folder / "hard");
    std::filesystem::create_hard_link(folder / "other", folder / "hard other");
    constexpr int kInput = 1, kOutput = 2;
    const std::pair<const char *, int> cases[] = {{"input", kInput},
                                                  {"below/../input", kInput},
                                                  {"link", kInput},
                                                  {"chain", kInput},
                                                  {"folder/link", kInput},
                                                  {"hard", kInput},
                                                  {"missing input", kInput},
                                                  {"below/../missing input", kInput},
                                                  {"dangling", kInput},
                                                  {"below/../other", kOutput},
                                                  {"hard other", kOutput},
                                                  {"below/../new", kOutput},
                                                  {"other", 0},
                                                  {"new", 0},
                                                  {"free", 0},
                                                  {"below", 0},
                                                  {"link to free", 0},
                                                  {"link to nothing", 0},
                                                  {"below/input", 0},
                                                  {"no/folder", 0}};
    for (const auto &[name, code] : cases)
        EXPECT_EQ(codeOf(folder / name), code) << name;
    EXPECT_EQ(textOfFile(folder / "input"), "input");
    EXPECT_EQ(textOfFile(folder / "other"), "other");
    EXPECT_FALSE(std::filesystem::exists(folder / "missing input"));

    // An open file of the process, as a shell's `>>` opens it.
    const int descriptor = open((folder / "input").c_str(), O_WRONLY | O_APPEND);
    EXPECT_EQ(codeOf("/dev/fd/" + std::to_string(descriptor)), kInput);
    close(descriptor);

    for (const char *name : {"input", "other", "below/../new"})
        EXPECT_FALSE(ZPAnnounceOutput(folder / name)) << name;
    EXPECT_TRUE(ZPAnnounceOutput("/dev/null") && ZPAnnounceOutput("/dev/null"));
}

TEST_F(OutputGate, AsksWhatAFileHoldsAndOnceMoreBeforeItIsReplaced) {
    ZPSetOutputGuard([](const std::filesystem::path &path) {
        return textOfFile(path) == "precious" ? "is precious" : nullptr;
    });
    std::ofstream(folder / "treasure") << "precious";
    std::filesystem::create_symlink("treasure", folder / "link");
    EXPECT_EQ(codeOf(folder / "link"), 3);

    // What comes while the output is made.
    for (const std::string name : {"free", "late"}) {
        ZPAtomicFile file(folder / name);
        ASSERT_TRUE(file.open() && file.write({}));
        std::ofstream(folder / name) << "precious";
        ZPError error;
        EXPECT_FALSE(file.commit(&error));
        EXPECT_EQ(error.failureReason(), "is precious");
        EXPECT_EQ(textOfFile(folder / name), "precious") << name;
    }
    ZPAtomicFile file(folder / "to be input");
    ASSERT_TRUE(file.open());
    std::ofstream(folder / "to be input") << "kept";
    EXPECT_TRUE(ZPInputFile(folder / "to be input").read({}).has_value());
    EXPECT_FALSE(file.commit());
    EXPECT_EQ(textOfFile(folder / "to be input"), "kept");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 8);
}

TEST_F(OutputGate, InputsAreReadWithoutWaitingForAWriter) {
    std::array<char, 16> room{};
    const auto read = [&](const std::filesystem::path &path) {
        ZPError error;
        const auto count = ZPInputFile(path).read(room, &error);
        return count ? std::string(room.data(), *count) : error.failureReason();
    };
    EXPECT_EQ(read(folder / "free"), "free");
    EXPECT_EQ(read(folder / "no"), ZPError::posix(ENOENT).failureReason());
    EXPECT_EQ(read(folder / "below"), ZPError::posix(EISDIR).failureReason());
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(read(folder / "pipe"), "");
    // What a writer has still to write is waited for.
    const int both = open((folder / "pipe").c_str(), O_RDWR);
    const pid_t writer = fork();
    if (writer == 0) {
        usleep(20000);
        _exit(write(both, "late", 4) == 4 ? 0 : 1);
    }
    EXPECT_EQ(read(folder / "pipe"), "late");
    close(both);
}

} // namespace
