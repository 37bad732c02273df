#include "archive/ZPFileHandle.h"
#include "tests/TestSupport.h"

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

/// How many of a file's pages are in the page cache.
std::size_t countCachedPages(const ZPFileHandle &file) {
    const std::size_t pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> pages((file.bytes().size() + pageSize - 1) / pageSize);
    void *address = const_cast<std::byte *>(file.bytes().data());
    EXPECT_EQ(mincore(address, file.bytes().size(), pages.data()), 0);
    return static_cast<std::size_t>(
        std::ranges::count_if(pages, [](unsigned char page) { return (page & 1) != 0; }));
}

/// False where the system keeps the file in memory all the same.
bool evict(const std::string &path) {
    const int descriptor = open(path.c_str(), O_RDONLY);
    const bool isDone =
        fsync(descriptor) == 0 && posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED) == 0;
    close(descriptor);
    return isDone && countCachedPages(*ZPFileHandle::fileHandleAtPath(path)) == 0;
}

TEST(ReadAhead, BringsAWholeFileIntoTheCache) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    constexpr std::size_t kPages = 4500; // more than one window, and a part of a request
    std::ofstream(path) << std::string(kPages * 4096 - 5, 'x');
    if (!evict(path))
        GTEST_SKIP() << "files stay in memory here";
    const auto file = ZPFileHandle::fileHandleAtPath(path);
    file->readAhead();
    EXPECT_EQ(countCachedPages(*file), kPages);

    // A part that is missing is found by samples.
    constexpr off_t kGap = 256 * 4096;
    for (const off_t first : {off_t{0}, 7 * kGap, 17 * kGap}) {
        const int descriptor = open(path.c_str(), O_RDONLY);
        posix_fadvise(descriptor, first, kGap, POSIX_FADV_DONTNEED);
        close(descriptor);
        EXPECT_LT(countCachedPages(*file), kPages);
        file->readAhead();
        EXPECT_EQ(countCachedPages(*file), kPages);
    }
}

TEST(ReadAhead, LeavesAFileOfHolesAlone) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    std::ofstream(path) << "x";
    std::filesystem::resize_file(path, std::size_t{1} << 32);
    const auto file = ZPFileHandle::fileHandleAtPath(path);
    file->readAhead();
    EXPECT_LT(countCachedPages(*file), 100u);
}

} // namespace
