#include "tests/TestSupport.h"

#include "io/ZPAtomicFile.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

std::size_t countFiles(const TemporaryFolder &folder) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder.path()), {}));
}

mode_t modeOf(const std::filesystem::path &path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// In both ways: most file systems have files without a name, some do not.
class AtomicFile : public testing::TestWithParam<ZPAtomicFile::Temporary> {
  protected:
    bool write(std::string_view text, const std::filesystem::path &target,
               ZPError *error = nullptr) const {
        ZPAtomicFile file(target, GetParam());
        return file.open(error) && file.write(bytesOf(text), error) && file.commit(error);
    }

    TemporaryFolder folder;
    std::filesystem::path path = folder / "file";
};

INSTANTIATE_TEST_SUITE_P(, AtomicFile,
                         testing::Values(ZPAtomicFile::Temporary::nameless,
                                         ZPAtomicFile::Temporary::named),
                         [](const auto &way) {
                             return way.param == ZPAtomicFile::Temporary::named ? "Named"
                                                                                : "Nameless";
                         });

TEST_P(AtomicFile, AppearsWholeOrNotAtAll) {
    ASSERT_TRUE(write("old", path));
    {
        ZPAtomicFile file(path, GetParam());
        ASSERT_TRUE(file.open() && file.write(bytesOf("ABC")));
        EXPECT_EQ(textOfFile(path), "old");
    }
    EXPECT_EQ(textOfFile(path), "old");
    EXPECT_EQ(countFiles(folder), 1u);
    ZPAtomicFile file(path, GetParam());
    ASSERT_TRUE(file.open() && file.write(bytesOf("ABC")) &&
                file.rewriteAtOffset(1, bytesOf("b")) && file.write(bytesOf("D")) && file.commit());
    EXPECT_EQ(textOfFile(path), "AbCD");
    EXPECT_EQ(countFiles(folder), 1u);
}

TEST_P(AtomicFile, TakesAnyNameThatTheSystemTakes) {
    const std::string longest(255, 'n');
    EXPECT_TRUE(write("long", folder / longest));
    EXPECT_EQ(textOfFile(folder / longest), "long");

    const std::pair<std::string, int> refused[] = {{longest + "n", ENAMETOOLONG},
                                                   {"missing/file", ENOENT},
                                                   {"new/", ENOENT},
                                                   {longest + "/file", ENOTDIR},
                                                   {".", EISDIR}};
    for (const auto &[name, code] : refused) {
        ZPError error;
        EXPECT_FALSE(ZPAtomicFile(folder / name, GetParam()).open(&error)) << name;
        EXPECT_EQ(error.code, code) << name;
    }
    EXPECT_FALSE(ZPAtomicFile("", GetParam()).open());
    EXPECT_EQ(countFiles(folder), 1u);
}

TEST_P(AtomicFile, HasTheModeOfTheOldFileOrOfTheMask) {
    const mode_t mask = umask(027);
    EXPECT_TRUE(write("new", path));
    EXPECT_EQ(modeOf(path), 0640u);
    for (const mode_t mode : {0600u, 0666u, 0444u}) {
        chmod(path.c_str(), mode);
        EXPECT_TRUE(write("again", path));
        EXPECT_EQ(modeOf(path), mode);
    }
    EXPECT_EQ(umask(mask), 027u);
}

TEST_P(AtomicFile, FollowsLinks) {
    std::filesystem::create_directory(folder / "else where");
    ASSERT_TRUE(write("old", folder / "else where/target"));
    std::filesystem::create_symlink("else where/target", folder / "relative");
    std::filesystem::create_symlink(folder / "relative", folder / "absolute");
    EXPECT_TRUE(write("new", folder / "absolute"));
    EXPECT_EQ(textOfFile(folder / "else where/target"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "absolute"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "relative"));

    std::filesystem::create_symlink("not yet", folder / "dangling");
    EXPECT_TRUE(write("made", folder / "dangling"));
    EXPECT_EQ(textOfFile(folder / "not yet"), "made");

    std::filesystem::create_symlink("round", folder / "round");
    ZPError error;
    EXPECT_FALSE(write("lost", folder / "round", &error));
    EXPECT_EQ(error.code, ELOOP);
}

TEST_P(AtomicFile, WritesToDevicesPipesAndOpenFilesWithoutReplacingThem) {
    std::filesystem::create_symlink("/dev/null", folder / "device");
    EXPECT_TRUE(write("nothing", folder / "device"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "device"));

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::array<char, 16> text{};
    EXPECT_TRUE(write("through", "/dev/fd/" + std::to_string(ends[1])));
    EXPECT_EQ(read(ends[0], text.data(), text.size()), 7);
    close(ends[0]);
    close(ends[1]);

    // What a shell's `> file` opened for the program goes on after what it holds.
    const int descriptor = creat(path.c_str(), 0600);
    ASSERT_EQ(::write(descriptor, "log\n", 4), 4);
    ZPAtomicFile file("/proc/self/fd/" + std::to_string(descriptor), GetParam());
    ASSERT_TRUE(file.open() && file.write(bytesOf("text")) &&
                file.rewriteAtOffset(0, bytesOf("T")) && file.commit());
    struct stat open {
    }, named{};
    fstat(descriptor, &open);
    stat(path.c_str(), &named);
    EXPECT_EQ(open.st_ino, named.st_ino);
    EXPECT_EQ(textOfFile(path), "log\nText");
    close(descriptor);
}

TEST_P(AtomicFile, KeepsTheCauseOfTheFirstFailure) {
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit small{4096, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    ZPAtomicFile file(path, GetParam());
    ZPError first, later;
    ASSERT_TRUE(file.open());
    EXPECT_FALSE(file.write(bytesOf(std::string(5000, 'x')), &first));
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(first.code, EFBIG);
    EXPECT_FALSE(file.write(bytesOf("more"), &later));
    EXPECT_EQ(later.code, EFBIG);
    EXPECT_FALSE(file.rewriteAtOffset(0, bytesOf("more"), &later));
    EXPECT_EQ(later.code, EFBIG);
    EXPECT_FALSE(file.commit(&later));
    EXPECT_EQ(later.code, EFBIG);
    EXPECT_EQ(countFiles(folder), 0u);
}

TEST_P(AtomicFile, LeavesNothingWhateverEndsTheProcess) {
    const bool isNamed = GetParam() == ZPAtomicFile::Temporary::named;
    for (const int signal : {SIGINT,  SIGTERM, SIGHUP,  SIGQUIT,   SIGXCPU,      SIGABRT, SIGTRAP,
                             SIGUSR1, SIGUSR2, SIGPIPE, SIGALRM,   SIGVTALRM,    SIGPROF, SIGIO,
                             SIGPWR,  SIGSYS,  SIGXFSZ, SIGSTKFLT, SIGRTMIN + 3, SIGKILL}) {
        if (signal == SIGKILL && isNamed)
            continue;
        const pid_t process = fork();
        if (process == 0) {
            const rlimit noCore{};
            setrlimit(RLIMIT_CORE, &noCore);
            // However many files were written before.
            for (int count = 0; count < 70; ++count)
                if (!write("before", path) || !std::filesystem::remove(path))
                    _exit(2);
            ZPAtomicFile one(path, GetParam()), two(folder / "two", GetParam());
            if (one.open() && two.open() && one.write(bytesOf("a")) && two.write(bytesOf("b")) &&
                countFiles(folder) == (isNamed ? 2u : 0u))
                raise(signal);
            _exit(1);
        }
        int status = 0;
        waitpid(process, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << signal;
        EXPECT_EQ(countFiles(folder), 0u) << signal;
    }
}

TEST_P(AtomicFile, IsWrittenInSpiteOfSignalsThatTheCallerIgnores) {
    for (const int signal : {SIGINT, SIGHUP, SIGQUIT}) {
        const pid_t process = fork();
        if (process == 0) {
            std::signal(signal, SIG_IGN); // as nohup does
            ZPAtomicFile file(path, GetParam());
            const bool isOpen = file.open() && file.write(bytesOf("kept"));
            raise(signal);
            _exit(isOpen && file.commit() ? 0 : 1);
        }
        int status = 0;
        waitpid(process, &status, 0);
        EXPECT_EQ(status, 0) << signal;
        EXPECT_EQ(textOfFile(path), "kept") << signal;
        std::filesystem::remove(path);
    }
}

} // namespace
