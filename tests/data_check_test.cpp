#include "tests/DataProgram.h"
#include "tests/FamilyArchive.h"
#include "tests/TestSupport.h"

#include <fstream>
#include <functional>
#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

constexpr std::uint32_t kFreeBit = 0x80000000;

/// Nine files of the first game's portal archive, each of which begins with its identifier; one of
/// three blocks.
FamilyArchive soundArchive(unsigned version) {
    FamilyArchive archive(version);
    for (std::uint32_t number = 1; number <= 8; ++number)
        archive.addFile(0x04000000 + number, words({0x04000000 + number, number}));
    archive.addFile(0x06000001, joined({words({0x06000001}), ZPData(2500)}));
    archive.finish();
    return archive;
}

ProgramRun check(std::vector<std::string> words) {
    words.insert(words.begin(), "check");
    return data(words);
}

TEST(DataCheck, FindsNothingInSoundArchives) {
    const TemporaryFolder folder;
    for (const unsigned version : {1u, 2u, 3u}) {
        const ProgramRun run = check({soundArchive(version).writeToPath(folder / "x.dat")});
        EXPECT_EQ(run.output, "9 files checked, nothing found\n");
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.log, "");
    }
    for (const char *world : {PLOTTERRA_SAMPLE_WORLD, PLOTTERRA_OLDER_SAMPLE_WORLD}) {
        const ProgramRun run = check({world});
        EXPECT_THAT(run.output, testing::EndsWith(" files checked, nothing found\n"));
        EXPECT_EQ(run.status, 0);
    }
}

TEST(DataCheck, FindsEachPlantedDamage) {
    using Damage = std::function<void(FamilyArchive &)>;
    const auto fileOf = [](FamilyArchive &archive, std::uint32_t identifier) {
        return archive.entries.at(identifier).offset;
    };
    constexpr std::uint32_t kBlock = FamilyArchive::kBlockSize;
    const std::size_t kCount = 248;
    const auto countPlace = [=](std::uint32_t node) {
        return FamilyArchive::placeInChain(node, kCount);
    };
    // The middle file, 0x04000005, is the root's; words of an entry of version 3: version,
    // identifier, offset, size.
    const struct {
        const char *name, *finding;
        Damage plant;
    } cases[] = {
        {"loop", "file chain: the chain contains a loop to",
         [&](FamilyArchive &a) {
             const std::uint32_t first = fileOf(a, 0x06000001);
             a.poke(first + kBlock, first);
         }},
        {"two chains in one block", "belongs to file 04000001 too",
         [&](FamilyArchive &a) {
             a.poke(a.entryPlace(a.leaves[0], 1) + 8, fileOf(a, 0x04000001));
         }},
        {"chain into a directory", "belongs to a directory too",
         [&](FamilyArchive &a) { a.poke(fileOf(a, 0x04000002), a.root); }},
        {"chain into the free blocks", "belongs to the free chain too",
         [&](FamilyArchive &a) { a.poke(fileOf(a, 0x04000002), a.lastFree); }},
        {"block in use marked free", "runs into the free block",
         [&](FamilyArchive &a) { a.poke(fileOf(a, 0x04000002), kFreeBit); }},
        {"chain outside the file", "does not fall within the blocks",
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[0], 0) + 8, 1 << 20); }},
        {"chain off a boundary", "does not begin on a block boundary",
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[0], 0) + 8, kBlock + 4); }},
        {"chain too short", "size: Data length (1020) is shorter than expected (1021)",
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[0], 0) + 12, 1021); }},
        {"chain too long", "size: the chain has 3 blocks, its 1020 bytes need 1",
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[1], 3) + 12, 1020); }},
        {"order within a node", "order: directory",
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[0], 1) + 4, 0x03000000); }},
        {"order between nodes", "04000007 does not come before 04000005",
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[0], 3) + 4, 0x04000007); }},
        {"an empty slot", "is an empty slot",
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[0], 2), 0); }},
        {"count too great", "invalid number of files (62)",
         [&](FamilyArchive &a) { a.poke(countPlace(a.leaves[0]), 62); }},
        {"count of an inner node", "2 files and 2 directories below it",
         [&](FamilyArchive &a) {
             a.poke(countPlace(a.root), 2);
             for (std::size_t word = 0; word < 4; ++word)
                 a.poke(a.entryPlace(a.root, 1) + 4 * word, word == 1 ? 0x04000006 : 1);
         }},
        {"directory twice", "belongs to a directory too",
         [&](FamilyArchive &a) { a.poke(FamilyArchive::placeInChain(a.root, 4), a.leaves[0]); }},
        {"directory outside", "does not fall within the blocks",
         [&](FamilyArchive &a) { a.poke(FamilyArchive::placeInChain(a.root, 4), 1 << 30); }},
        {"leaf at another depth", "lies at level 3, other leaves at 2",
         [&](FamilyArchive &a) {
             // The second leaf gets a child, a copy of an empty node, in a free block.
             a.poke(FamilyArchive::placeInChain(a.leaves[1], 0), a.firstFree);
             a.poke(a.firstFree, a.firstFree + kBlock);
             a.poke(a.firstFree + kBlock, 0);
             a.poke(340, a.firstFree + 2 * kBlock);
         }},
        {"lost blocks", "2 blocks from",
         [&](FamilyArchive &a) {
             a.poke(a.firstFree, 0);
             a.poke(a.firstFree + kBlock, 0);
             a.poke(340, a.firstFree + 2 * kBlock);
             a.poke(348, (a.lastFree - a.firstFree) / kBlock - 1);
         }},
        {"free blocks out of the chain", "marked free and not in the free chain",
         [&](FamilyArchive &a) { a.poke(340, a.firstFree + kBlock); }},
        {"free block not marked", "is not marked free",
         [&](FamilyArchive &a) { a.poke(a.firstFree, a.firstFree + kBlock); }},
        {"free chain loops", "Free block chain contains a loop",
         [&](FamilyArchive &a) { a.poke(a.lastFree, kFreeBit | a.firstFree); }},
        {"free chain ends early", "the header has",
         [&](FamilyArchive &a) { a.poke(344, a.lastFree - kBlock); }},
        {"free count", "Free block count recorded in header (7)",
         [&](FamilyArchive &a) { a.poke(348, 7); }},
        {"free chain into a directory", "of the free chain belongs to a directory",
         [&](FamilyArchive &a) { a.poke(a.firstFree, kFreeBit | a.root); }},
        {"free chain outside", "free chain: free block",
         [&](FamilyArchive &a) { a.poke(a.lastFree, kFreeBit | 0x7FFFFC00); }},
        {"file cut short", "header: The header has 1048576 bytes, the file 1047552",
         [&](FamilyArchive &a) { a.file.bytes.resize(a.file.bytes.size() - kBlock); }},
        {"less than a mebibyte in the header", "(1047552 bytes) is not a multiple of 1,048,576",
         [&](FamilyArchive &a) { a.poke(328, (1 << 20) - kBlock); }},
        {"blocks of an unusual size", "warning: x.dat at 00000000: header: Unrecognized block size",
         [&](FamilyArchive &a) { a.poke(324, 2048); }},
        {"size in the header", "is not a multiple of the block size",
         [&](FamilyArchive &a) { a.poke(328, (1 << 20) - 4); }},
        {"record of another identifier", "identifier: Identifier stored in file (04000009)",
         [&](FamilyArchive &a) { a.poke(fileOf(a, 0x04000002) + 4, 0x04000009); }},
        {"record too short for its identifier", "record: 3 bytes are too few",
         [&](FamilyArchive &a) { a.poke(a.entryPlace(a.leaves[0], 0) + 12, 3); }},
    };
    const TemporaryFolder folder;
    for (const auto &row : cases) {
        FamilyArchive archive = soundArchive(3);
        row.plant(archive);
        const ProgramRun run = check({archive.writeToPath(folder / "x.dat")});
        EXPECT_EQ(run.status, 1) << row.name;
        EXPECT_THAT(run.output, HasSubstr(row.finding)) << row.name;
    }
}

TEST(DataCheck, DecodesRecordsAndHeedsTheSelection) {
    FamilyArchive archive(3);
    // A version record that is too short, one of a trader that ends early, and one that goes on.
    archive.addFile(0xFFFF0001, hex("0102"));
    archive.addFile(0x41000001, hex("01000041 01 61 0000"));
    archive.addFile(0x42000001, hex("01000042 00 FF"));
    archive.addFile(0x42000002, hex("02000042 00"));
    // Only at the top is it the record's own identifier.
    archive.addFile(0x43000001, hex("99000043 01000043"));
    archive.addFile(0x43000002, hex("02000043 98000043"));
    archive.finish();
    const TemporaryFolder folder;
    std::ofstream(folder / "own.lua")
        << "return { name = 'Own', types = { 0x43 }, decode = function(cursor, out) local word = "
           "cursor:readLittleInt32() out:group('g', function() out:identifier(word) end) "
           "out:identifier(cursor:readLittleInt32()) end }";
    const std::string path = archive.writeToPath(folder / "x.dat");
    const ProgramRun all = check({path, "--format", "tsv", "--decoders", folder.path()});
    EXPECT_EQ(all.status, 1);
    EXPECT_THAT(all.output, testing::Not(HasSubstr("0x43000001")));
    EXPECT_THAT(all.output, HasSubstr("Identifier stored in file (43000098)"));
    EXPECT_EQ(all.output.substr(0, all.output.find('\n')),
              "identifier\tarchive\tseverity\tkind\toffset\tcause");
    EXPECT_THAT(all.output, HasSubstr("0x41000001\tx\terror\trecord\t0x00000800\tat 00000008: "));
    EXPECT_THAT(all.output,
                HasSubstr("0x42000001\tx\twarning\trecord\t0x00000c00\t1 bytes are left\n"));
    EXPECT_THAT(all.output, HasSubstr("0xffff0001\tx\terror\trecord\t"));
    EXPECT_THAT(all.output, testing::Not(HasSubstr("0x42000002")));
    const ProgramRun some = check({path, "--type", "42"});
    EXPECT_THAT(some.output,
                testing::EndsWith("       1 warning: record\n2 files checked, see above\n"));
    EXPECT_EQ(check({path, "--id", "42000002"}).status, 0);
}

TEST(DataCheck, ColoursAndProgressAreForTerminalsThatCan) {
    if (!runOnTerminal("true"))
        GTEST_SKIP() << "there is no terminal to be had";
    const TemporaryFolder folder;
    FamilyArchive archive = soundArchive(3);
    archive.poke(348, 7);
    const std::string path = archive.writeToPath(folder / "x.dat");
    const auto onTerminal = [&](const std::string &environment) {
        return runOnTerminal(environment + " " PLOTTERRA_DATA_PROGRAM " check " + path)->output;
    };
    const std::string red = "\x1b[31merror\x1b[0m: x.dat at ", plain = "error: x.dat at ";
    const std::string shown = onTerminal("TERM=xterm NO_COLOR=");
    EXPECT_THAT(shown, HasSubstr(red));
    EXPECT_THAT(shown, HasSubstr("\rdecoding 9 of 9 (100 %)\x1b[K"));
    EXPECT_LT(shown.find("\r\x1b[K"), shown.find(red)); // it is gone before the findings come
    EXPECT_THAT(onTerminal("TERM=xterm NO_COLOR=1"),
                testing::AllOf(HasSubstr(plain), HasSubstr("\rdecoding ")));
    for (const char *environment : {"TERM=dumb", "env -u TERM"}) {
        const std::string quiet = onTerminal(environment);
        EXPECT_THAT(quiet, HasSubstr(plain));
        EXPECT_EQ(quiet.find('\x1b'), std::string::npos) << environment;
    }
}

} // namespace
