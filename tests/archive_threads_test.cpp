// Archives that several threads use at once.

#include "tests/ArchiveBytes.h"
#include "tests/TestSupport.h"

#include "archive/ZPGorvaneDataFile.h"
#include "game/WQArchiveFamilies.h"
#include "io/ZPParallel.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

/// As in kWQArchiveFamily, but now and then it takes its time, so that whoever builds an index has
/// to wait for those who help.
bool readFileEntrySlowly(ZPDataCursor &cursor, ZPGorvaneFileEntry &entry) {
    const bool isEntry = kWQArchiveFamily.readFileEntry(cursor, entry);
    if (entry.identifier % 256 == 0)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    return isEntry;
}

TEST(Threads, WhoeverBuildsAnIndexTakesUpNoOtherWorkMeanwhile) {
    // Other work may ask for the index that is being built, or for one whose builder waits for this
    // one: the former would build it twice, the latter never end.
    constexpr std::uint32_t kThreads = 8, kTasks = 200, kFiles = 8000;
    const TemporaryFolder folder;
    ArchiveBytes archive;
    archive.addEntries(kFiles);
    archive.writeToPath(folder / "archive");
    ZPGorvaneArchiveFamily family = kWQArchiveFamily;
    family.readFileEntry = &readFileEntrySlowly;

    std::atomic<std::size_t> found = 0, takenUp = 0;
    const auto lookUp = [&](std::size_t number) {
        thread_local bool isLookingUp = false;
        takenUp += isLookingUp;
        const bool wasLookingUp = std::exchange(isLookingUp, true);
        ZPGorvaneDataFile dataFile(family, folder / "archive");
        found +=
            dataFile.fileEntryWithIdentifier(static_cast<std::uint32_t>(number) + 1) != nullptr;
        isLookingUp = wasLookingUp;
    };
    CapturedLog captured;
    ZPWithThreads(kThreads, [&] { ZPParallelFor(kTasks, lookUp); });
    EXPECT_EQ(found, kTasks);
    EXPECT_EQ(takenUp, 0u);
}

} // namespace
