#include "game/WQDataFileComparison.h"
#include "game/WQKnownDungeons.h"
#include "io/ZPParallel.h"
#include "io/ZPSystemLog.h"
#include "tests/ArchiveBytes.h"
#include "tests/TestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <sstream>

namespace {

using Keys = std::vector<std::uint32_t>;
/// Contents by identifier; a file without any is listed at a place where no block begins.
using Files = std::map<std::uint32_t, std::optional<std::string>>;

class Comparison : public testing::Test {
  protected:
    std::unique_ptr<WQDataFile> archive(const Files &files,
                                        std::uint32_t type = WQDataFile::cell) const {
        ArchiveBytes bytes;
        for (const auto &[identifier, contents] : files)
            if (contents)
                bytes.addFile(identifier, *contents);
            else
                bytes.addEntry(identifier, {.fileOffset = 0x301, .fileSize = 4});
        bytes.writeToPath(_folder / "archive");
        auto dataFile = std::make_unique<WQDataFile>(_folder / "archive");
        std::filesystem::remove(_folder / "archive");
        dataFile->setType(type);
        return dataFile;
    }

    std::string savedText(bool (WQDataFileComparison::*save)(const std::filesystem::path *,
                                                             ZPError *) const,
                          const WQDataFileComparison &comparison) const {
        const auto path = _folder / "text";
        EXPECT_TRUE((comparison.*save)(&path, nullptr));
        const std::string text = textOfFile(path);
        testing::internal::CaptureStdout();
        EXPECT_TRUE((comparison.*save)(nullptr, nullptr));
        EXPECT_EQ(testing::internal::GetCapturedStdout(), text);
        return text;
    }

    TemporaryFolder _folder;
};

const std::string kLong(700, 'x');

void expectDigestsOf(const Files &files, const std::optional<WQFileDigestMap> &digests) {
    ASSERT_TRUE(digests);
    std::size_t readable = 0;
    for (const auto &[identifier, contents] : files) {
        std::optional<std::string> digest;
        if (contents)
            digest = ZPSHA1DigestString(std::as_bytes(std::span(*contents)));
        EXPECT_EQ(digests->find(identifier), digest) << std::hex << identifier;
        readable += contents.has_value();
    }
    EXPECT_EQ(digests->size(), readable);
}

TEST_F(Comparison, FindsWhatCameWentAndChanged) {
    const Files old = {
        {0x1234FFFF, "land"}, {0x1234FFFE, kLong}, {0x12340100, ""}, {0x1235FFFF, "sea"}};
    const auto with = [&old](const Files &others) {
        Files files = others;
        files.insert(old.begin(), old.end());
        return files;
    };
    const std::string edited = kLong.substr(1) + "y";
    const struct {
        const char *what;
        Files files;
        Keys added, removed, changed;
    } cases[] = {
        {"the same", old, {}, {}, {}},
        {"one byte, far into the chain", with({{0x1234FFFE, edited}}), {}, {}, {0x1234FFFE}},
        {"longer, otherwise the same", with({{0x1235FFFF, "seas"}}), {}, {}, {0x1235FFFF}},
        {"an empty file filled", with({{0x12340100, "cell"}}), {}, {}, {0x12340100}},
        {"object block and cell came",
         with({{0x1235FFFE, "o"}, {0x00070100, "c"}, {0x00070101, "c"}}),
         {0x00070100, 0x00070101, 0x1235FFFE},
         {},
         {}},
        {"unreadable", with({{0x1235FFFF, std::nullopt}}), {}, {0x1235FFFF}, {}},
        {"unreadable and new", with({{0x1235FFFE, std::nullopt}}), {}, {}, {}},
        {"the last went, others came",
         with({{0x1235FFFF, std::nullopt}, {0x00010100, "c"}}),
         {0x00010100},
         {0x1235FFFF},
         {}},
        {"nothing there", {}, {}, {0x12340100, 0x1234FFFE, 0x1234FFFF, 0x1235FFFF}, {}},
    };
    const auto blocks = [](const Keys &keys) {
        std::set<std::uint32_t> numbers;
        for (const std::uint32_t key : keys)
            numbers.insert(key >> 16);
        return Keys(numbers.begin(), numbers.end());
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        // Nobody has loaded them before the first comparison.
        const auto oldFile = archive(old), newFile = archive(c.files);
        for (const bool isSwapped : {false, true}) {
            WQDataFileComparison comparison(isSwapped ? newFile.get() : oldFile.get(),
                                            isSwapped ? oldFile.get() : newFile.get());
            comparison.buildComparison();
            const Keys &added = isSwapped ? c.removed : c.added;
            const Keys &removed = isSwapped ? c.added : c.removed;
            EXPECT_EQ(comparison.fileKeysAdded(), added);
            EXPECT_EQ(comparison.fileKeysRemoved(), removed);
            EXPECT_EQ(comparison.fileKeysChanged(), c.changed);
            EXPECT_EQ(comparison.landBlocksAdded()->numbers(), blocks(added));
            EXPECT_EQ(comparison.landBlocksRemoved()->numbers(), blocks(removed));
            EXPECT_EQ(comparison.landBlocksChanged()->numbers(), blocks(c.changed));
            expectDigestsOf(isSwapped ? c.files : old, comparison.digests1());
            expectDigestsOf(isSwapped ? old : c.files, comparison.digests2());
        }
    }
}

TEST_F(Comparison, NeedsTwoCellArchivesForLandBlocks) {
    const auto some = archive({{0x00070100, "abc"}});
    const auto portal = archive({{0x00080100, "abc"}}, WQDataFile::portal);
    const std::string nothing = "added: 0, removed: 0, changed: 0\n" + std::string(70, '-') +
                                "\nAdded land blocks:\n" + std::string(70, '-') +
                                "\nRemoved land blocks:\n" + std::string(70, '-') +
                                "\nChanged land blocks:\n";
    const struct {
        WQDataFile *old, *current;
        bool hasKeys, hasBlocks;
    } cases[] = {
        {some.get(), portal.get(), true, true}, {portal.get(), some.get(), true, false},
        {nullptr, some.get(), false, false},    {some.get(), nullptr, false, false},
        {nullptr, nullptr, false, false},
    };
    for (const auto &c : cases) {
        WQDataFileComparison comparison(c.old, c.current);
        comparison.buildComparison();
        EXPECT_EQ(comparison.digests1().has_value(), c.old != nullptr);
        EXPECT_EQ(comparison.digests2().has_value(), c.current != nullptr);
        EXPECT_EQ(comparison.fileKeysAdded().has_value(), c.hasKeys);
        EXPECT_EQ(comparison.landBlocksAdded().has_value(), c.hasBlocks);
        EXPECT_EQ(comparison.landBlocksChanged().has_value(), c.hasBlocks);
        if (!c.hasBlocks) {
            EXPECT_EQ(savedText(&WQDataFileComparison::saveLandBlockSummaryToURL, comparison),
                      nothing);
        }
    }

    // An older client without this archive: everything is new.
    WQDataFile missing(_folder / "missing");
    missing.setType(WQDataFile::cell);
    WQDataFileComparison comparison(&missing, some.get());
    comparison.buildComparison();
    EXPECT_EQ(comparison.fileKeysAdded(), Keys{0x00070100});
    EXPECT_TRUE(comparison.landBlocksAdded()->contains(7));
    EXPECT_FALSE(comparison.landBlocksAdded()->contains(0x10007));
}

TEST_F(Comparison, Reports) {
    const auto old = archive({{0x1234FFFF, "abc"}, {0x7F80FFFE, ""}, {0xFE00FFFF, "old"}});
    const auto current = archive({{0x00070100, "c"},
                                  {0x00070101, "c"},
                                  {0x1234FFFF, "abc"},
                                  {0xABCD0123, std::nullopt},
                                  {0xFE00FFFF, "new"}});
    WQDataFileComparison comparison(old.get(), current.get());
    comparison.buildComparison();
    const std::string line = std::string(70, '-') + "\n";
    const auto &names = WQKnownDungeonNames();
    const std::string name =
        names.contains(0x0007) ? " -- " + std::string(names.at(0x0007)) : std::string();
    EXPECT_EQ(savedText(&WQDataFileComparison::saveSummaryToURL, comparison),
              "added: 2, removed: 1, changed: 1\n" + line + "Added files:\n00070100\n00070101\n" +
                  line + "Removed files:\n7f80fffe\n" + line + "Changed files:\nfe00ffff\n");
    EXPECT_EQ(savedText(&WQDataFileComparison::saveLandBlockSummaryToURL, comparison),
              "added: 1, removed: 1, changed: 1\n" + line +
                  "Added land blocks:\n0007   96.3S 101.9W" + name + "\n" + line +
                  "Removed land blocks:\n7f80    0.5N   0.3W\n" + line +
                  "Changed land blocks:\nfe00  101.9S 101.3E\n");

    EXPECT_TRUE(comparison.saveFile1DigestsToURL(_folder / "1"));
    EXPECT_EQ(textOfFile(_folder / "1"), "1234ffff = a9993e364706816aba3e25717850c26c9cd0d89d\n"
                                         "7f80fffe = da39a3ee5e6b4b0d3255bfef95601890afd80709\n"
                                         "fe00ffff = " +
                                             *comparison.digests1()->find(0xFE00FFFF) + "\n");
    EXPECT_EQ(comparison.digests2()->size(), 4);
    EXPECT_EQ(comparison.digests2()->find(0xABCD0123), std::nullopt);

    ZPError error;
    EXPECT_FALSE(comparison.saveFile2DigestsToURL(_folder / "no" / "2", &error));
    EXPECT_EQ(error.code, ENOENT);
}

/// The lines of a log without their time and process.
std::vector<std::string> messages(const std::string &log) {
    std::vector<std::string> lines;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line.substr(line.find("] ") + 2));
    return lines;
}

TEST_F(Comparison, AnyNumberOfThreadsSaysTheSame) {
    // Just as many as four lines of progress stand for; of the others it is no round number.
    Files files;
    for (std::uint32_t index = 0; index < 4000; ++index) {
        std::optional<std::string> &contents = files[index << 16 | 0xFFFF];
        if (index % 50 != 7)
            contents = std::string(index % 600, static_cast<char>(index));
    }
    // Beside it one that lacks a file in three, has others between them, and differs in some.
    Files newerFiles;
    for (const auto &[identifier, contents] : files) {
        const std::uint32_t index = identifier >> 16;
        if (index % 3 != 0)
            newerFiles[identifier] = index % 40 == 1 ? "changed" : contents;
        if (index % 5 == 0)
            newerFiles[identifier - 1] = "new";
    }
    const auto dataFile = archive(files), newerDataFile = archive(newerFiles);
    dataFile->loadFileEntriesIfNecessary();
    newerDataFile->loadFileEntriesIfNecessary();
    const char *name = "-[WQDataFileComparison buildSHA1DigestsByIDForDataFile:]";
    const auto appendLines = [name](std::vector<std::string> &lines, std::size_t count,
                                    const WQDataFileComparison &comparison) {
        const auto *address = static_cast<const void *>(&comparison);
        lines.push_back(ZPFormat("[%p]  > %s", address, name));
        for (std::size_t done = 0; done < count; done += 1000)
            lines.push_back(
                ZPFormat("hashed %8zu / %8zu = %5.1f %%", done, count,
                         100.0 * static_cast<double>(done) / static_cast<double>(count)));
        lines.push_back(ZPFormat("hashed %8zu / %8zu = 100.0 %%", count, count));
        lines.push_back(ZPFormat("[%p] <  %s", address, name));
    };
    for (const unsigned threads : {1u, 2u, 7u}) {
        SCOPED_TRACE(threads);
        WQDataFileComparison comparison(dataFile.get(), newerDataFile.get());
        CapturedLog captured;
        ZPWithThreads(threads, [&comparison] { comparison.buildComparison(); });
        const std::string log = captured.take();
        std::vector<std::string> lines;
        appendLines(lines, files.size(), comparison);
        appendLines(lines, newerFiles.size(), comparison);
        EXPECT_EQ(messages(log), lines);
        expectDigestsOf(files, comparison.digests1());
        expectDigestsOf(newerFiles, comparison.digests2());
    }
}

} // namespace
