#include "data_tool/RecordReader.h"
#include "game/WQStoredObject.h"
#include "io/ZPSHA1.h"
#include "io/ZPText.h"
#include "tests/DataProgram.h"
#include "tests/FamilyArchive.h"
#include "tests/TestSupport.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

const std::string kWorld = PLOTTERRA_SAMPLE_WORLD, kOlderWorld = PLOTTERRA_OLDER_SAMPLE_WORLD;

/// A line of a shell, in which $DATA is the program.
ProgramRun shell(const std::string &line) {
    return runProgram({"/bin/bash", "-c", "DATA=" PLOTTERRA_DATA_PROGRAM "; " + line});
}

class DataCommands : public testing::Test {
  protected:
    /// Files 0x04000001, 0x06000002 (two blocks), 0x13000001 and 0x13000003 (empty).
    FamilyArchive archive(unsigned version) {
        FamilyArchive made(version);
        made.addFile(0x04000001, hex("01000004 AABB"));
        made.addFile(0x06000002, joined({hex("02000006"), ZPData(1200, std::byte{0x5A})}));
        made.addFile(0x13000001, hex("01000013"));
        made.addFile(0x13000003, ZPData());
        return made;
    }
    std::string written(FamilyArchive made, const std::string &name) {
        made.finish();
        return made.writeToPath(_folder / name);
    }

    TemporaryFolder _folder;
};

TEST_F(DataCommands, ListsArchivesOfEveryFamily) {
    const struct {
        unsigned version;
        const char *key, *rows, *text, *json;
    } cases[] = {
        {3, "ostvale",
         "0x04000001\tx\t0x04\tWQPalette\t6\t2001-09-09T01:46:40Z\t0x00020001\t0x00000400\n"
         "0x06000002\tx\t0x06\tWQImage\t1204\t2001-09-09T01:46:40Z\t0x00020001\t0x00000800\n"
         "0x13000001\tx\t0x13\t\t4\t2001-09-09T01:46:40Z\t0x00020001\t0x00001000\n"
         "0x13000003\tx\t0x13\t\t0\t2001-09-09T01:46:40Z\t0x00020001\t0x00001400\n",
         "0x04000001 WQPalette                         6 2001-09-09T01:46:40Z 00020001 "
         "0x00000400\n",
         R"("class":"WQPalette","size":6,"date":"2001-09-09T01:46:40Z","version":"0x00020001",)"},
        {2, "ostvale2",
         "0x04000001\tx\t0x04\t\t6\t2001-09-09T01:46:40Z\t\t0x00000400\n"
         "0x06000002\tx\t0x06\t\t1204\t2001-09-09T01:46:40Z\t\t0x00000800\n"
         "0x13000001\tx\t0x13\t\t4\t2001-09-09T01:46:40Z\t\t0x00001000\n"
         "0x13000003\tx\t0x13\t\t0\t2001-09-09T01:46:40Z\t\t0x00001400\n",
         "0x04000001                                   6 2001-09-09T01:46:40Z 0x00000400\n",
         R"("size":6,"date":"2001-09-09T01:46:40Z",)"},
        {1, "ostvale-retail",
         "0x04000001\tx\t0x04\t\t6\t\t\t0x00000400\n0x06000002\tx\t0x06\t\t1204\t\t\t0x00000800\n"
         "0x13000001\tx\t0x13\t\t4\t\t\t0x00001000\n0x13000003\tx\t0x13\t\t0\t\t\t0x00001400\n",
         "0x04000001                                   6 0x00000400\n", R"("size":6,)"},
    };
    const std::string header = "identifier\tarchive\ttype\tclass\tsize\tdate\tversion\toffset\n";
    for (const auto &row : cases) {
        const std::string path = written(archive(row.version), "x.dat");
        const ProgramRun list = data({"list", "--format", "tsv", path});
        EXPECT_EQ(list.status, 0);
        EXPECT_EQ(list.output, header + row.rows);
        EXPECT_EQ(list.log, "");
        const std::vector<std::string> first = {"list",     "--id", "4000001",
                                                "--format", "json", path};
        EXPECT_EQ(data(first).output, R"({"identifier":"0x04000001","archive":"x","type":"0x04",)" +
                                          std::string(row.json) +
                                          R"("offset":"0x00000400"})"
                                          "\n");
        EXPECT_EQ(data({"list", "--id", "4000001", path}).output, row.text);
        const ProgramRun info = data({"info", path});
        EXPECT_THAT(info.output, AllOf(HasSubstr(row.key), HasSubstr("4 of 1214 bytes")));
        EXPECT_EQ(data({"check", path}).output, "4 files checked, nothing found\n");
        EXPECT_EQ(data({"cat", path, "6000002"}).output.substr(4), std::string(1200, 'Z'));
        EXPECT_EQ(data({"--game", row.key, "list", path}).status, 0);
        const char *otherKey = row.version == 3 ? "ostvale2" : "ostvale";
        const ProgramRun other = data({"--game", otherKey, "list", path});
        EXPECT_EQ(other.status, 1);
        EXPECT_THAT(other.log, HasSubstr(std::string(otherKey) + " wants"));
    }
}

TEST_F(DataCommands, SaysWhatStandsWhereAHeaderShouldBe) {
    FamilyArchive made = archive(3);
    made.finish();
    made.poke(320, 0x12345678);
    const ProgramRun run = data({"info", made.writeToPath(_folder / "x.dat")});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.log, AllOf(HasSubstr("x.dat: is an archive of no known family"),
                               HasSubstr("004c5000 at 256"), HasSubstr("12345678 at 320"),
                               HasSubstr("00000000 at 300")));
    EXPECT_EQ(data({"info", _folder / "none"}).status, 1);
    EXPECT_EQ(data({"info"}).status, 2);
    EXPECT_EQ(data({"list", "--type", "xyz", kWorld}).status, 2);
    EXPECT_EQ(data({"list", "--format", "xml", kWorld}).status, 2);
    const ProgramRun help = data({"list", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, HasSubstr("--ids-from"));
}

TEST_F(DataCommands, SelectsAndSorts) {
    FamilyArchive made = archive(3);
    made.addFile(0x13000002, ZPData(), 1200000000);
    made.finish();
    // The chain of one file leads into the free blocks.
    made.poke(made.entries[0x13000001].offset, made.lastFree);
    const std::string path = made.writeToPath(_folder / "x.dat");
    const auto identifiers = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"list", path, "--format", "json"});
        std::string found;
        const std::string output = data(words).output;
        for (std::size_t at = 0;
             (at = output.find("{\"identifier\":\"0x", at)) != std::string::npos;)
            found += output.substr(at += 17, 8) + " ";
        return found;
    };
    EXPECT_EQ(identifiers({"--type", "0x06,13"}), "06000002 13000001 13000002 13000003 ");
    EXPECT_EQ(identifiers({"--id", "4000001-6000002", "--id", "0x13000002"}),
              "04000001 06000002 13000002 ");
    EXPECT_EQ(identifiers({"--larger", "6"}), "06000002 ");
    EXPECT_EQ(identifiers({"--newer", "2001-09-10"}), "13000002 ");
    EXPECT_EQ(identifiers({"--newer", "1200000000"}), "13000002 ");
    EXPECT_EQ(identifiers({"--newer", "1200000001"}), "");
    for (const char *text : {"abcd-03-31", "2005-x-31", "2005-03-3x", "2005-02-30", "05-03-31"})
        EXPECT_EQ(data({"list", path, "--newer", text}).status, 2) << text;
    EXPECT_EQ(identifiers({"--damaged"}), "13000001 ");
    EXPECT_EQ(identifiers({"--sound", "--type", "13"}), "13000002 13000003 ");
    EXPECT_EQ(identifiers({"--sort", "-size,-id", "--type", "4,6,13"}),
              "06000002 04000001 13000001 13000003 13000002 ");
    EXPECT_EQ(identifiers({"--sort", "-date,-id", "--type", "13"}), "13000002 13000003 13000001 ");
    EXPECT_EQ(identifiers({"--type", "WQImage,4"}), "04000001 06000002 ");
    EXPECT_EQ(identifiers({"--block", "0400"}), "");
    std::ofstream(_folder / "ids") << "0x6000002\n\n4000001\r\n";
    EXPECT_EQ(identifiers({"--ids-from", _folder / "ids"}), "04000001 06000002 ");
    std::ofstream(_folder / "ids") << "4000001\nnonsense\n";
    const ProgramRun refused = data({"list", path, "--ids-from", _folder / "ids"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.log, HasSubstr("ids:2: 'nonsense'"));
}

TEST_F(DataCommands, WhatIsLeftOutBehindADamagedDirectoryIsNoSuccess) {
    FamilyArchive made = archive(3);
    made.finish();
    made.poke(FamilyArchive::placeInChain(made.leaves.at(0), 248), 63);
    const std::string path = made.writeToPath(_folder / "x.dat");
    for (const std::vector<std::string> &words : {std::vector<std::string>{"list", path},
                                                  {"info", path},
                                                  {"extract", path, _folder / "out"},
                                                  {"diff", path, path}}) {
        const ProgramRun run = data(words);
        EXPECT_EQ(run.status, 1) << words[0];
        EXPECT_THAT(run.log, HasSubstr("invalid number of files")) << words[0];
    }
    // What was asked for is all there.
    EXPECT_EQ(data({"cat", path, "13000001"}).status, 0);
}

TEST_F(DataCommands, OneCommandFeedsTheNext) {
    const std::string folder = _folder / "out";
    const ProgramRun run = shell("set -o pipefail; $DATA list --type 0x41 --format tsv " + kWorld +
                                 " | $DATA extract --json --ids-from - " + kWorld + " " + folder);
    EXPECT_EQ(run.status, 0) << run.log;
    EXPECT_THAT(textOfFile(folder + "/local/Trader/41000001.json"),
                AllOf(HasSubstr("\"township\":\"0x40000001\""), EndsWith("}\n")));
    EXPECT_FALSE(std::filesystem::exists(folder + "/portal"));
    // Every archive has a file of this identifier; the list tells which is meant, with its header
    // and without it.
    for (const char *filter : {"cat", "grep cell", "cut -f 1,2"}) {
        const ProgramRun one = shell("$DATA list --id ffff0001 --format tsv " + kWorld +
                                     " | grep 'identifier\\|cell' | " + filter +
                                     " | $DATA list --ids-from - " + kWorld);
        EXPECT_THAT(one.output, testing::MatchesRegex("0xffff0001 WQVersion .* cell\n")) << filter;
    }
    // A reader that goes away ends it quietly.
    const ProgramRun broken = shell("$DATA list " + kWorld + " | head -1; echo ${PIPESTATUS[0]}");
    EXPECT_EQ(broken.log, "");
    EXPECT_THAT(broken.output, EndsWith("\n0\n"));
    for (const std::string &command : {"list " + kWorld, "cat --text " + kWorld + " 13000000",
                                       "diff --land " + kOlderWorld + " " + kWorld}) {
        const ProgramRun full = shell("$DATA " + command + " > /dev/full");
        EXPECT_EQ(full.status, 1);
        EXPECT_THAT(full.log, HasSubstr("cannot write to standard output: No space")) << command;
    }
}

TEST_F(DataCommands, ExtractsWhatHashesLikeTheDigests) {
    FamilyArchive made = archive(3);
    made.finish();
    made.poke(made.entries[0x13000001].offset, made.lastFree);
    const std::string path = made.writeToPath(_folder / "x.dat"), folder = _folder / "out";
    ProgramRun run = data({"extract", path, folder});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.log, AllOf(HasSubstr("x: 13000001: Block offset 80000000"),
                               HasSubstr("3 files written, 0 were there, 1 failed")));
    const std::string image = folder + "/WQImage/06000002.bin";
    struct stat file {};
    ASSERT_EQ(stat(image.c_str(), &file), 0);
    EXPECT_EQ(file.st_mtime, 1000000000);

    // What has not both the right size and date is written anew, and never through a link.
    const std::string outer = _folder / "outer", palette = folder + "/WQPalette/04000001.bin";
    const auto setDate = [](const std::string &changed, time_t date) {
        const timespec dates[] = {{date, 0}, {date, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, changed.c_str(), dates, 0), 0);
    };
    std::ofstream(outer) << "kept";
    std::filesystem::remove(image);
    std::filesystem::create_hard_link(outer, image);
    std::filesystem::remove(palette);
    std::filesystem::create_symlink(outer, palette);
    setDate(folder + "/type_13/13000003.bin", 1000000001);
    run = data({"extract", path, folder});
    EXPECT_THAT(run.log, HasSubstr("3 files written, 0 were there, 1 failed"));
    EXPECT_EQ(textOfFile(outer), "kept");
    EXPECT_EQ(textOfFile(palette).size(), 6u);
    std::ofstream(palette) << "half";
    setDate(palette, 1000000000);
    run = data({"extract", path, folder});
    EXPECT_THAT(run.log, HasSubstr("1 files written, 2 were there, 1 failed"));
    const std::string text = textOfFile(image);
    const std::string digest = ZPSHA1DigestString(std::as_bytes(std::span(text)));
    const ProgramRun diff = data({"diff", "--digests", "--format", "tsv", path,
                                  written(FamilyArchive(archive(3)), "y.dat")});
    EXPECT_EQ(diff.status, 1);
    EXPECT_EQ(data({"diff", path, path}).output, "added: 0, removed: 0, changed: 0\n");
    FamilyArchive other = archive(3);
    other.addFile(0x06000002, "something else");
    other.addFile(0x06000003, "new");
    const std::string newer = written(other, "z.dat");
    const ProgramRun changed = data({"diff", "--digests", "--format", "tsv", path, newer});
    EXPECT_THAT(data({"diff", "--digests", path, newer}).output,
                testing::ContainsRegex("added   0x06000003 WQImage +- +3 z - [0-9a-f]{40}\n"));
    EXPECT_THAT(changed.output, HasSubstr("0x06000002\tz\tchanged\tWQImage\t1204\t14\t" + digest));

    // A file that cannot be written whole leaves the older one as it was.
    run = shell("ulimit -f 1; $DATA extract --again " + path + " " + folder);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.log, AllOf(HasSubstr("06000002.bin: File too large"),
                               HasSubstr("2 files written, 0 were there, 2 failed")));
    EXPECT_EQ(textOfFile(image), text);

    // Nothing is written through a link that leads out of the folder.
    std::filesystem::remove_all(folder + "/WQImage");
    std::filesystem::create_directory(_folder / "elsewhere");
    std::filesystem::create_directory_symlink(_folder / "elsewhere", folder + "/WQImage");
    EXPECT_EQ(data({"extract", path, folder}).status, 1);
    EXPECT_TRUE(std::filesystem::is_empty(_folder / "elsewhere"));
}

TEST_F(DataCommands, AnInterruptedExtractionGoesOn) {
    const std::string folder = _folder / "out",
                      extract = "$DATA extract --type WQDungeonBlock " + kWorld + " " + folder;
    const auto numberBefore = [](const std::string &text, const char *words) {
        const std::size_t end = text.find(words), start = text.rfind(' ', end - 1);
        return end != std::string::npos ? std::stoul(text.substr(start)) : 0;
    };
    const ProgramRun first = shell(extract + " & until compgen -G '" + folder +
                                   "/cell/*/*'; do :; done; kill -TERM $!; wait $!");
    EXPECT_EQ(first.status, 128 + SIGTERM);
    EXPECT_THAT(first.log, testing::ContainsRegex("; interrupted, [1-9][0-9]* were still to come"));
    const ProgramRun second = shell(extract);
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(numberBefore(second.log, " were there"), numberBefore(first.log, " files written"));
    EXPECT_EQ(numberBefore(second.log, " files written"),
              numberBefore(first.log, " were still to come"));
    // A caller that ignores a signal has its way.
    EXPECT_EQ(
        shell("trap '' HUP; " + extract + " --again & sleep 0.1; kill -HUP $!; wait $!").status, 0);
}

TEST_F(DataCommands, ShowsRecordsDecoded) {
    const ProgramRun text = data({"cat", "--text", "--offsets", kWorld, "40000001"});
    EXPECT_EQ(text.status, 0) << text.log;
    EXPECT_THAT(text.output, AllOf(HasSubstr("00000000     4  identifier: 40000001\n"),
                                   HasSubstr("     2  size: "), HasSubstr("[bits 8-15]"),
                                   HasSubstr("    [0] trader: -> 41000001\n")));
    // The dump of a class of its own is to the letter; the same record as a tree has its places.
    EXPECT_EQ(data({"extract", "--text", "--id", "40000001", kWorld, _folder / "text"}).status, 0);
    EXPECT_EQ(textOfFile(_folder / "text/local/Township/40000001.txt"),
              data({"cat", "--text", kWorld, "40000001"}).output);
    const ProgramRun region = data({"cat", "--text", kWorld, "13000000"});
    EXPECT_THAT(region.output, AllOf(HasSubstr("Barren Rock"), HasSubstr("remaining: 0\n")));
    EXPECT_THAT(data({"cat", "--json", kWorld, "13000000"}).output, HasSubstr("\"Seedfall\""));
    EXPECT_THAT(data({"cat", "--text", "--archive", "cell", kWorld, "ffff0001"}).output,
                testing::MatchesRegex("version: [0-9]+\n"));
    const ProgramRun several = data({"cat", kWorld, "ffff0001"});
    EXPECT_EQ(several.status, 2);
    EXPECT_THAT(several.log, HasSubstr("portal, highres, cell, local"));
    EXPECT_THAT(data({"cat", "--json", "--archive", "portal", kWorld, "6000001"}).log,
                HasSubstr("there is no decoder for it, a WQImage"));
    EXPECT_THAT(data({"cat", "--hex", "--archive", "portal", kWorld, "4000001"}).output,
                testing::StartsWith("00000000  01 00 00 04"));
}

TEST_F(DataCommands, TellsWhatChangedInRecords) {
    const ProgramRun same = data({"diff", kWorld, kWorld});
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(same.output, "added: 0, removed: 0, changed: 0\n");
    const ProgramRun run = data({"diff", "--records", "--type", "0x41", kOlderWorld, kWorld});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, testing::ContainsRegex("    wares.0..price: [0-9]+ => [0-9]+\n"));
    EXPECT_THAT(run.output, Not(HasSubstr("greeting")));
    // In a table each field is a line like the others, which the other commands take in turn, and
    // stands under the headings of the columns that were asked for.
    const std::string digest = "[0-9a-f]{40}";
    const struct {
        std::vector<std::string> flags;
        std::string header, changed, field;
    } tables[] = {{{}, "", "", ""},
                  {{"--records"}, "\tfield", "\t", "\twares.0..price"},
                  {{"--digests"}, "\told-sha1\tnew-sha1", "\t" + digest + "\t" + digest, ""},
                  {{"--digests", "--records"},
                   "\told-sha1\tnew-sha1\tfield",
                   "\t" + digest + "\t" + digest + "\t",
                   "\t\t\twares.0..price"}};
    for (const auto &row : tables) {
        std::vector<std::string> words = {"diff", "--format",  "tsv", "--type",
                                          "0x41", kOlderWorld, kWorld};
        words.insert(words.end(), row.flags.begin(), row.flags.end());
        const std::string table = data(words).output;
        EXPECT_THAT(table, testing::StartsWith("identifier\tarchive\tchange\tclass\told\tnew" +
                                               row.header + "\n"));
        EXPECT_THAT(table, testing::ContainsRegex("\n0x410000..\tlocal\tchanged\tTrader\t[0-9]+\t"
                                                  "[0-9]+" +
                                                  row.changed + "\n"));
        if (!row.field.empty()) {
            EXPECT_THAT(table, testing::ContainsRegex("\n0x410000..\tlocal\tfield\tTrader\t[0-9]+\t"
                                                      "[0-9]+" +
                                                      row.field + "\n"));
        }
    }
    const ProgramRun land = data({"diff", "--land", kOlderWorld, kWorld});
    EXPECT_EQ(data({"diff", "--land", "--type", "41", kOlderWorld, kWorld}).status, 2);
    EXPECT_THAT(land.output,
                AllOf(testing::StartsWith("added: "), HasSubstr("Changed land blocks:\n")));
}

TEST_F(DataCommands, DecodersAreFoundAndBrokenOnesNamed) {
    std::filesystem::create_directory(_folder / "mine");
    std::ofstream(_folder / "mine/broken.lua") << "return {\n";
    std::ofstream(_folder / "mine/palette.lua")
        << "return { name = 'Mine', classes = { 'WQPalette' }, extension = 'pal',\n"
           "  decode = function(cursor, out)\n"
           "    out:text('t', 'a\\27[2J') error('\\27[31m')\n  end }\n";
    const ProgramRun list = data({"decoders", "--decoders", _folder / "mine"});
    EXPECT_EQ(list.status, 1);
    EXPECT_THAT(list.output, AllOf(HasSubstr("broken.lua:2:"), HasSubstr("Mine"),
                                   HasSubstr("WQLandBlock"), HasSubstr("chronicle.lua")));
    // What a script or a record says reaches no terminal as it is.
    const std::string path = written(archive(3), "x.dat");
    const ProgramRun cat = data({"--decoders", _folder / "mine", "cat", "--text", path, "4000001"});
    EXPECT_EQ(cat.status, 1);
    EXPECT_EQ(cat.output, "t: \"a\\u{1b}[2J\"\n");
    EXPECT_THAT(cat.log, AllOf(HasSubstr("palette.lua:3: \\u{1b}[31m"), Not(HasSubstr("\x1b"))));
    data({"--decoders", _folder / "mine", "extract", "--type", "4", path, _folder / "out"});
    EXPECT_TRUE(std::filesystem::exists(_folder / "out/WQPalette/04000001.pal"));
    EXPECT_EQ(data({"--decoders", _folder / "none", "list", path}).status, 1);

    std::filesystem::remove(_folder / "mine/broken.lua");
    std::ofstream(_folder / "mine/traders.lua")
        << "return { name = 'Traders', types = { 0x41 }, classes = { 'WQPalete' },\n"
           "  games = { 'ostvale' }, decode = function() end }\n";
    const ProgramRun own = data({"decoders", "--decoders", _folder / "mine"});
    EXPECT_EQ(own.status, 1);
    EXPECT_THAT(own.log, HasSubstr("traders.lua: WQPalete is no record class\n"));
    EXPECT_THAT(
        own.output,
        testing::ContainsRegex("\nTrader +0x41 +[^ ]*/trader.lua\n +0x41 +behind .*/mine/traders"));
    EXPECT_THAT(data({"--decoders", _folder / "mine", "list", path}).log, HasSubstr("WQPalete"));
    EXPECT_EQ(data({"decoders"}).status, 0);
}

TEST(RecordText, AClassWithoutADumpLeavesItToTheTree) {
    ZPRecordTree tree;
    tree.reset(1);
    tree.addNumber(ZPRecordValueKind::unsignedInteger, "n", 7, {0, 1});
    const ZPData bytes = hex("01000004");
    ZPDataCursor cursor(bytes);
    WQStoredObject record(cursor, nullptr);
    EXPECT_EQ(textOfRecord(&record, tree), "n: 7\n");
    EXPECT_EQ(textOfRecord(nullptr, tree), "n: 7\n");
    record.appendFormat("a dump");
    EXPECT_EQ(textOfRecord(&record, tree), "a dump\n");
}

TEST_F(DataCommands, RecordsOfOtherGamesAreNotTakenForThoseOfTheFirst) {
    // What would be a trader that ends early.
    for (const unsigned version : {1u, 2u}) {
        FamilyArchive other(version);
        other.addFile(0x41000001, hex("01000041 FF"));
        const ProgramRun run = data({"check", written(other, "portal.dat")});
        EXPECT_EQ(run.status, 0) << run.output;
    }
}

} // namespace
