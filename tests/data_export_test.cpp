// GDAL, a reader that is not ours, says where the exported land lies and which way up.

#include "data_tool/Land.h"
#include "io/ZPLogSink.h"
#include "io/ZPSystemLog.h"
#include "tests/FamilyArchive.h"
#include "tests/PatchedWorld.h"
#include "tests/ProgramRun.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const std::string kWorld = PLOTTERRA_SAMPLE_WORLD;

std::string shell(const std::string &line) {
    const ProgramRun run = runProgram(
        {"/bin/sh", "-c", "DATA=" PLOTTERRA_DATA_PROGRAM "; WORLD=" + kWorld + "; " + line});
    EXPECT_EQ(run.status, 0) << line << run.log;
    return run.output;
}

class DataExport : public testing::Test {
  protected:
    void SetUp() override {
        ZPSetLogSink([](std::string_view) {});
        ASSERT_EQ(chdir(_folder.path().c_str()), 0);
    }
    void TearDown() override {
        ZPSetLogSink(nullptr);
        ASSERT_EQ(chdir("/"), 0);
    }
    TemporaryFolder _folder;
};

TEST_F(DataExport, HeightsLieWhereTheyAre) {
    shell("$DATA export $WORLD heights h.tif && $DATA export $WORLD types t.tif");
    const DataSet dataSet = openDataSet(kWorld, nullptr);
    const Land land(dataSet);
    const auto &heights = land.worldInfo().actualLandHeights();
    // Points far from each other and from every symmetry; the coordinates are in map units.
    for (const auto &[column, row] : {std::pair{700u, 1200u}, std::pair{1500u, 900u},
                                      std::pair{1000u, 1700u}, std::pair{300u, 333u}}) {
        const WQLandPoint &point = land.grid().at(column, row);
        if (!point.has(WQLandPoint::hasData))
            continue;
        const std::string place =
            ZPFormat(" %.1f %.1f", -101.9 + column / 10.0, -101.9 + row / 10.0);
        const std::string found = shell("gdallocationinfo -valonly -geoloc h.tif" + place);
        EXPECT_FLOAT_EQ(std::stof(found), heights[point.heightIndex]) << place;
        EXPECT_EQ(std::stoul(shell("gdallocationinfo -valonly -geoloc t.tif" + place)),
                  point.landType())
            << place;
    }
    const auto range = land.heightRange();
    ASSERT_TRUE(range);
    const std::string info = shell("$DATA info $WORLD");
    EXPECT_THAT(
        info, HasSubstr(ZPFormat("land heights from %g to %g\n", static_cast<double>(range->first),
                                 static_cast<double>(range->second))));
    EXPECT_THAT(
        shell("gdalinfo -stats h.tif"),
        AllOf(HasSubstr(ZPFormat("Minimum=%.3f, Maximum=%.3f", static_cast<double>(range->first),
                                 static_cast<double>(range->second))),
              HasSubstr("Type=Float32"), HasSubstr("NoData Value=-9999"),
              HasSubstr("Size is 2041, 2041"), HasSubstr("AREA_OR_POINT=Point"),
              HasSubstr("ENGCRS[\"Map coordinates\"")));
    EXPECT_THAT(shell("gdalinfo t.tif"),
                AllOf(HasSubstr("Color Table"), HasSubstr("0: Barren Rock"), HasSubstr("32: Road"),
                      HasSubstr("0: 206,176,124,255")));
}

TEST_F(DataExport, HeightsThatAreNoNumbersAreSaidAndLeftOut) {
    const std::string fault = "3 of the 256 land heights in the region record (13000000) are no "
                              "finite numbers, first that of index 0";
    const std::string world = patchedWorld(_folder / "world", kWorld, [](std::string &portal) {
        using Limits = std::numeric_limits<float>;
        patchLandHeight(portal, 0, Limits::infinity());
        patchLandHeight(portal, 3, Limits::quiet_NaN());
        patchLandHeight(portal, 7, -Limits::infinity());
    });
    const std::string program = PLOTTERRA_DATA_PROGRAM;
    const ProgramRun info = runProgram({program, "info", world});
    EXPECT_EQ(info.status, 1);
    EXPECT_THAT(info.log, HasSubstr(fault));
    EXPECT_THAT(info.output, testing::ContainsRegex("land heights from [0-9.]+ to [0-9.]+\n"));
    const ProgramRun check = runProgram({program, "check", world});
    EXPECT_EQ(check.status, 1);
    EXPECT_THAT(check.output, AllOf(HasSubstr("error: client_portal.dat 13000000 at "),
                                    HasSubstr(": record: " + fault + "\n"),
                                    HasSubstr("       1 error: record\n")));
    const ProgramRun exported = runProgram({program, "export", world, "heights", "h.tif"});
    EXPECT_EQ(exported.status, 1);
    EXPECT_THAT(exported.log, HasSubstr(fault + "; the raster has no data there"));
    EXPECT_THAT(shell("gdalinfo -stats h.tif"), Not(testing::ContainsRegex("nan|inf,|inf\n")));
}

TEST_F(DataExport, FeaturesLieWhereTheyAre) {
    shell("$DATA export $WORLD roads r.json && $DATA export $WORLD blocks b.json && "
          "$DATA export $WORLD/towns.txt places p.json");
    // Column 0x7F from the west, row 0x68 from the south, each 0.8 units.
    const std::string block = shell("ogrinfo -al -where \"block='7f68'\" b.json");
    EXPECT_THAT(block, AllOf(HasSubstr("Feature Count: 1"),
                             HasSubstr("(-0.3 -18.7,0.5 -18.7,0.5 -17.9,-0.3 -17.9,-0.3 -18.7)")));
    EXPECT_THAT(shell("ogrinfo -so -al r.json"),
                AllOf(HasSubstr("Line String"), HasSubstr("ENGCRS[\"Map coordinates\"")));
    const std::string towns = textOfFile(kWorld + "/towns.txt");
    EXPECT_THAT(shell("ogrinfo -so -al p.json"),
                HasSubstr("Feature Count: " +
                          std::to_string(std::count(towns.begin(), towns.end(), '\n'))));
    // East before north, and no more decimals than a place has.
    std::ofstream("places") << "dot;12.3456749S 57.5E;One\n;0.1N 3.000001W;Two;\n";
    shell("$DATA export places places p.json");
    EXPECT_THAT(textOfFile("p.json"),
                AllOf(HasSubstr(R"("coordinates":[57.5,-12.34567]},)"
                                R"("properties":{"type":"dot","label":"One"}})"),
                      HasSubstr(R"("coordinates":[-3.0,0.1]},)"
                                R"("properties":{"type":"","label":"Two"}})")));
}

TEST_F(DataExport, BlocksReachToTheCornersOfTheWorld) {
    FamilyArchive made(3);
    for (const std::uint32_t block : {0x0000u, 0x00FEu, 0xFE00u, 0xFEFEu, 0x7F00u})
        made.addFile(block << 16 | 0xFFFE, ZPData());
    made.addFile(0xFF00FFFE, ZPData()); // off the land
    made.finish();
    made.writeToPath(_folder / "cell.dat");
    shell("$DATA export cell.dat blocks b.json");
    const std::string blocks = textOfFile("b.json");
    EXPECT_EQ(countOf(blocks, "\"block\""), 5u);
    EXPECT_THAT(blocks, AllOf(HasSubstr(R"("block":"0000")"), HasSubstr(R"("block":"00fe")"),
                              HasSubstr(R"("block":"fe00")"), HasSubstr(R"("block":"fefe")")));
}

} // namespace
