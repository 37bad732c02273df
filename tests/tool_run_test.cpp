// Runs of the built programs on the sample world, which the test suite makes first.

#include "tests/ProgramRun.h"
#include "tests/SampleRun.h"
#include "tests/TestSupport.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// What the program says of the table that it was built with.
const std::string kKnownDungeonsLine =
    std::to_string(knownDungeonRows().size()) + " known dungeons";

class PlotterraRun : public testing::Test {
  protected:
    ProgramRun run(std::vector<std::string> words) const {
        words.insert(words.begin(), kProgram);
        return runProgram(words);
    }

    /// Runs with these options on the sample world and decodes the picture.
    DecodedPNG draw(std::vector<std::string> options) const {
        options.push_back(kWorld);
        options.push_back(out("map"));
        EXPECT_EQ(run(options).status, 0);
        return decodePNG(out("map.png"));
    }

    std::string out(const std::string &name) const { return folder / name; }

    TemporaryFolder folder;
};

} // namespace

TEST_F(PlotterraRun, RefusesWrongCommandLines) {
    const struct {
        std::vector<std::string> words;
        int status;
        std::string complaint;
    } cases[] = {
        {{}, 0, ""},
        {{"in"}, 0, ""},
        {{"-m", "in", "out"}, 2, ""},
        {{"--bogus", "in", "out"}, 2, "unrecognized option '--bogus'"},
        {{"in", "--b\x1b[31m\u202e", "out"}, 2, R"(unrecognized option '--b\u{1b}[31m\u{202e}')"},
        {{"in", "out", "-s"}, 2, "option requires an argument -- 's'"},
        {{"-a", "in"}, 2, ""},
        {{"-x", "-a", "in", "out"}, 2, "invalid option -- 'x'"},
    };
    for (const auto &[words, status, complaint] : cases) {
        const ProgramRun result = run(words);
        EXPECT_EQ(result.status, status) << testing::PrintToString(words);
        EXPECT_THAT(result.log, HasSubstr(complaint));
        EXPECT_THAT(result.log, HasSubstr(kKnownDungeonsLine + "\n"));
        EXPECT_THAT(result.log, HasSubstr("Plotterra v3 (Compiled: Jan 11 2016 03:11:02)\nUsage: "
                                          "Plotterra [options] <directory with dat files>"));
        EXPECT_TRUE(result.log.ends_with("        -h                   generate height map\n\n"));
        EXPECT_THAT(result.log, testing::Not(HasSubstr("inputPath")));
    }
}

TEST_F(PlotterraRun, DrawsTheSampleWorld) {
    const ProgramRun result = run({kWorld, out("map.v1.jpg")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "basePath: " + kWorld + "\n");

    auto lines = result.logLines();
    // Those are the affair of whoever wrote the table.
    std::erase_if(lines,
                  [](const auto &line) { return line.starts_with("Warning: Duplicate key: "); });
    const std::vector<std::string> order = {
        "+[ZPGorvaneClientData registerClientDataClass:forGorvaneGame:]",
        "+[ZPGorvaneClientData registerClientDataClass:forGorvaneGame:]",
        kKnownDungeonsLine,
        "inputPath: " + kWorld,
        "outputPath: " + out("map.v1.png"),
        "old data path: (null)",
        "[0x",
        "elapsed time: ",
        "normalized light vector: (  -0.707107    0.707107    0.000000)",
        "landsize: 2041 x 2041, scale: 1, imageSize: 2041 x 2041, bytesPerPixel: 4, bytesPerRow: "
        "8164",
        "[0x",
        "elapsed time: ",
        "land block count: ",
        "diffuseFactor for deep water: 0.853553",
        "--------------------------------------------------------------",
        "initialBitmapContext: 2041 x 2041, 8 bits a component, RGBA",
        "Done that part.",
        "minDiff: ",
    };
    ASSERT_EQ(lines.size(), order.size()) << result.log;
    for (std::size_t index = 0; index < order.size(); ++index)
        EXPECT_THAT(lines[index], StartsWith(order[index]));

    const DecodedPNG picture = decodePNG(out("map.v1.png"));
    EXPECT_EQ(picture.width, kSize);
    EXPECT_EQ(picture.height, kSize);
    EXPECT_EQ(picture.bytesPerPixel, 4u);
    EXPECT_EQ(picture.chunkTypes, (std::vector<std::string>{"IHDR", "IDAT", "IEND"}));
    std::size_t opaque = 0;
    for (std::size_t index = 3; index < picture.bytes.size(); index += 4)
        opaque += picture.bytes[index] == 255;
    EXPECT_EQ(opaque, picture.bytes.size() / 4);
    // The light of flat ground on the deep sea colour (120, 158, 190).
    EXPECT_EQ(std::memcmp(picture.pixel(0, 0), "\x66\x86\xa2\xff", 4), 0);
}

TEST_F(PlotterraRun, WritesHowLongItsStagesTookWhereAsked) {
    ASSERT_EQ(runProgram({"/usr/bin/env", "PLOTTERRA_STAGES=" + out("stages"), kProgram, kWorld,
                          out("map.png")})
                  .status,
              0);
    std::ifstream file(out("stages"));
    std::map<std::string, double> stages;
    double seconds;
    for (std::string name; file >> seconds && std::getline(file >> std::ws, name);)
        stages[name] = seconds;
    ASSERT_EQ(stages.size(), 5u);
    for (const char *name : {"open and index", "read blocks", "shade", "encode and write"})
        EXPECT_TRUE(stages[name] > 0 && stages[name] < 60) << name;
    EXPECT_LE(stages["of that, write"], stages["encode and write"]);
}

TEST_F(PlotterraRun, MakesAbsentLandTransparentWithAlpha) {
    const DecodedPNG plain = draw({}), picture = draw({"-a"});
    std::size_t transparent = 0, wrong = 0;
    for (std::size_t index = 0; index < plain.bytes.size(); index += 4) {
        const bool isClear = std::memcmp(&picture.bytes[index], "\0\0\0\0", 4) == 0;
        transparent += isClear;
        wrong +=
            std::memcmp(&picture.bytes[index],
                        isClear ? "\0\0\0\0" : reinterpret_cast<const char *>(&plain.bytes[index]),
                        4) != 0;
    }
    EXPECT_EQ(wrong, 0u);
    EXPECT_NEAR(static_cast<double>(transparent) / (kSize * kSize), 0.05, 0.02);
}

TEST_F(PlotterraRun, EveryScaleShowsTheSamePointsInLittleMemory) {
    constexpr long kMemoryLimit = 160 * 1024;
    for (const std::string mode : {"", "-h"}) {
        std::vector<std::string> options{"-s", "1"};
        if (!mode.empty())
            options.push_back(mode);
        const DecodedPNG small = draw(options);
        for (std::size_t scale = 1; scale <= 8; ++scale) {
            options[1] = std::to_string(scale);
            auto words = options;
            words.push_back(kWorld);
            words.push_back(out("large"));
            const ProgramRun result = run(words);
            EXPECT_EQ(result.status, 0);
            EXPECT_LT(result.peakMemory, kMemoryLimit) << "scale " << scale << mode;
            if (scale != 2 && scale != 3 && scale != 8)
                continue; // decoding is the long part
            std::size_t row = 0, wrong = 0;
            const std::size_t pixelSize = small.bytesPerPixel;
            const auto width = forEachRowOfPNG(out("large.png"), [&](const std::uint8_t *pixels) {
                for (std::size_t x = 0; x < kSize; ++x)
                    for (std::size_t part = 0; part < scale; ++part)
                        wrong += std::memcmp(pixels + (x * scale + part) * pixelSize,
                                             small.pixel(x, row / scale), pixelSize) != 0;
                ++row;
            });
            EXPECT_EQ(width, kSize * scale);
            EXPECT_EQ(row, kSize * scale);
            EXPECT_EQ(wrong, 0u) << "scale " << scale << mode;
        }
    }
}

TEST_F(PlotterraRun, TakesOptionsInAnyPlaceTheLastOfAKindCounts) {
    const ProgramRun result = run({kWorld, "-s", "3", out("map/"), "more", "--scale", "2"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.logLines(), Contains("outputPath: " + out("map.png")));
    EXPECT_EQ(decodePNG(out("map.png")).width, 2 * kSize);
    const std::pair<std::string, std::string> refusals[] = {
        {"0", "0"}, {"09", "9"}, {"word", "0"}, {"4294967298", "2147483647"}};
    for (const auto &[scale, number] : refusals) {
        const ProgramRun refused = run({"-s", scale, kWorld, out(scale)});
        EXPECT_EQ(refused.status, 0);
        EXPECT_THAT(refused.logLines(), Contains("Error: scale (" + number + ") must be 1-8"));
        EXPECT_EQ(decodePNG(out(scale + ".png")).width, kSize);
    }
    run({"-s", "2x", kWorld, out("map")});
    EXPECT_EQ(decodePNG(out("map.png")).width, 2 * kSize);
    // Snow and bright water are replaced by the colour scheme before anything is drawn.
    draw({});
    const std::string plain = textOfFile(out("map.png"));
    draw({"--snow", "-w"});
    EXPECT_EQ(textOfFile(out("map.png")), plain);
}

TEST_F(PlotterraRun, GivesTheSameFileOnOneProcessor) {
    draw({"-g"});
    const std::string file = textOfFile(out("map.png"));
    EXPECT_EQ(
        runProgram({"/usr/bin/taskset", "-c", "0", kProgram, "-g", kWorld, out("one")}).status, 0);
    EXPECT_EQ(textOfFile(out("one.png")), file);
}

TEST_F(PlotterraRun, GoesOnWithoutArchives) {
    const ProgramRun result = run({out("nowhere"), out("map")});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.log, HasSubstr("error: Error Domain=POSIXErrorDomain Code=2"));
    EXPECT_THAT(result.log, HasSubstr("client_cell_1.dat"));
    EXPECT_THAT(result.log, HasSubstr("land block count: 0 (0.0 %)"));
    EXPECT_THAT(result.log, HasSubstr(", nan % of used land)"));
    EXPECT_EQ(decodePNG(out("map.png")).width, kSize);

    // Only the cell archive: the land is there, but flat.
    std::filesystem::create_directory(folder / "part");
    std::filesystem::copy(kWorld + "/client_cell_1.dat", folder / "part");
    EXPECT_THAT(run({out("part"), out("flat")}).log, HasSubstr("there is no region record"));

    // A damaged one: cut in the middle, its blocks are left out one by one.
    std::filesystem::resize_file(folder / "part/client_cell_1.dat", 5 << 20);
    const ProgramRun cut = run({out("part"), out("cut")});
    EXPECT_EQ(cut.status, 0);
    EXPECT_EQ(decodePNG(out("cut.png")).width, kSize);
}

TEST_F(PlotterraRun, SaysWhatItCannotWriteAndLeavesNothing) {
    std::filesystem::create_directory(folder / "taken.png");
    const std::string words = "Failed to generate map image (CGImageDestinationFinalize()).";
    for (const std::string name : {"missing/map", "taken"}) {
        const ProgramRun result = run({kWorld, out(name)});
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(
            result.log,
            HasSubstr("error saving map: Error Domain=WQMapperErrorDomain Code=1 \"" + words));
    }
    EXPECT_THAT(run({"-h", kWorld, out("missing/map")}).log,
                HasSubstr("error saving height map: Error Domain=WQMapperErrorDomain Code=1 "
                          "\"Failed to generate height map image"));

    std::size_t count = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(folder.path()))
        ++count;
    EXPECT_EQ(count, 1u);
}

TEST_F(PlotterraRun, ReadsPlotFiles) {
    const auto logOf = [&](const std::string &text) {
        std::ofstream(folder / "plot.txt", std::ios::binary) << text;
        return run({"--plot", out("plot.txt"), kWorld, out("map")}).logLines();
    };
    const struct {
        std::string text, lines, points, reason;
    } cases[] = {
        {"a;1N 1E;A\nb;2N 2E;B\nc;3N 3E;\n", "4", "3", ""},
        {"dot;;label\na;b\ndot;12.3N, 45.6E;Town;extra\nx;nonsense;y", "4", "1", ""},
        {"1N 1E\na;1N 1E", "2", "0", ""}, // two fields at the very end
        {"", "1", "0", ""},
        {"good;1N 1E;\nbad;1N 1E;\xff\n", "0", "0", "line 2 is not UTF-8"},
        {"a;1N 1E;" + std::string((1 << 20) + 1, 'x'), "0", "0",
         "line 1 is longer than 1048576 bytes"},
    };
    for (const auto &[text, lines, points, reason] : cases) {
        const auto log = logOf(text);
        EXPECT_THAT(log, Contains("Found " + lines + " lines in " + out("plot.txt")));
        EXPECT_THAT(log, Contains("Found " + points + " coordinates"));
        const auto complaint =
            Contains("Error: cannot read the places of " + out("plot.txt") + ": " + reason);
        EXPECT_THAT(log, testing::Conditional(reason.empty(), testing::_, complaint));
    }
    const std::pair<std::string, std::string> unreadable[] = {
        {out("none.txt"), "No such file or directory"},
        {out("."), "Is a directory"},
        {"/dev/zero", "line 1 is longer than 1048576 bytes"}};
    for (const auto &[name, reason] : unreadable) {
        const ProgramRun result = run({"--plot", name, kWorld, out("map")});
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.logLines(),
                    Contains("Error: cannot read the places of " + name + ": " + reason));
        EXPECT_THAT(result.logLines(), Contains("Found 0 lines in " + name));
        EXPECT_THAT(result.logLines(), Contains("Found 0 coordinates"));
    }
}

TEST_F(PlotterraRun, ReadsLargePlotFilesInLittleMemoryAndFewWords) {
    std::ofstream plot(folder / "plot.txt", std::ios::binary);
    for (int count = 0; count < 200; ++count)
        plot << "a;\x1b[1mnowhere;\n";
    plot << std::string(100 << 20, '\n') << "b;1N 1E;Here";
    plot.close();
    const ProgramRun result = run({"--plot", out("plot.txt"), kWorld, out("map")});
    EXPECT_LT(result.peakMemory, 160 * 1024);
    const auto lines = result.logLines();
    EXPECT_EQ(std::ranges::count(lines, "\\u{1b}[1mnowhere => {0, 0}"), 100);
    EXPECT_THAT(lines, Contains("... and 100 more coordinates that cannot be read"));
    EXPECT_THAT(lines, Contains("Found 104857801 lines in " + out("plot.txt")));
    EXPECT_THAT(lines, Contains("Found 1 coordinates"));
}

TEST_F(PlotterraRun, IsSilentOrOddAboutChangesAsItAlwaysWas) {
    const ProgramRun silent = run({"--save-changes", out("changes.txt"), kWorld, out("map")});
    EXPECT_THAT(silent.log, testing::Not(HasSubstr("changes")));
    EXPECT_FALSE(std::filesystem::exists(out("changes.txt")));

    const ProgramRun odd =
        run({"-h", "--old", kWorld, "--save-changes", out("changes.txt"), kWorld, out("height")});
    EXPECT_EQ(odd.status, 0);
    EXPECT_THAT(odd.logLines(), Contains("error saving changes: (null)"));
    EXPECT_EQ(decodePNG(out("height.png")).bytesPerPixel, 1u);
}
