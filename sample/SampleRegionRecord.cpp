#include "sample/SampleRegionRecord.h"

#include "io/ZPMutableDataCursor.h"
#include "io/ZPText.h"
#include "sample/SampleTerrain.h"

#include <iterator>
#include <string_view>

namespace {

struct LandType {
    const char *name;
    std::uint8_t red, green, blue;
};

constexpr LandType kLandTypes[] = {{"Barren Rock", 206, 176, 124},
                                   {"Grassland", 179, 184, 144},
                                   {"Ice", 235, 237, 242},
                                   {"Lush Grass", 163, 178, 44},
                                   {"Marsh Sparse Swamp", 181, 154, 80},
                                   {"Mud Rich Dirt", 177, 152, 136},
                                   {"Obsidian Plain", 153, 137, 166},
                                   {"Packed Dirt", 199, 185, 162},
                                   {"Patchy Dirt", 172, 158, 96},
                                   {"Patchy Grassland", 162, 182, 32},
                                   {"Yellow Sand", 230, 193, 144},
                                   {"Grey Sand", 225, 224, 210},
                                   {"Rock Strewn Sand", 224, 205, 182},
                                   {"Sedimentary Rock", 214, 180, 152},
                                   {"Semi-Barren Rock", 186, 197, 159},
                                   {"Snow", 229, 229, 229},
                                   {"Running Water", 142, 166, 189},
                                   {"Fresh Standing Water", 163, 176, 189},
                                   {"Shallow Sea", 166, 198, 225},
                                   {"Shallow Still Sea", 152, 172, 190},
                                   {"Deep Sea", 120, 158, 190},
                                   {"Forest Floor", 144, 153, 70},
                                   {"Faux Running Water", 194, 209, 224},
                                   {"Sea Slime", 147, 155, 142},
                                   {"Argila", 195, 184, 162},
                                   {"Volcano 1", 168, 155, 155},
                                   {"Volcano 2", 185, 185, 184},
                                   {"Blue Ice", 204, 226, 230},
                                   {"Moss", 202, 179, 140},
                                   {"Dark Moss", 181, 155, 110},
                                   {"Vorrik", 202, 181, 144},
                                   {"Desolate Lands", 200, 189, 166},
                                   {"Road", 223, 214, 197}};

constexpr const char *kDayNames[] = {"Moonday", "Plowday",   "Tideday",
                                     "Lampday", "Hearthday", "Marketday"};
constexpr const char *kMonthNames[] = {"Frostwane", "Seedfall",  "Greenmantle", "Highsun",
                                       "Goldsheaf", "Stagmonth", "Rainturn",    "Leafdown",
                                       "Firstrime", "Longnight", "Wolfmoon",    "Thawbreak"};
constexpr std::uint32_t kDaysPerMonth = 30;

struct TimeOfDay {
    float start; // share of the day
    bool isNight;
    const char *name;
};
constexpr TimeOfDay kTimes[] = {
    {0.0f, true, "Midnight"},      {0.0625f, true, "Late Night"}, {0.1875f, true, "Before Dawn"},
    {0.25f, false, "Dawn"},        {0.3125f, false, "Morning"},   {0.5f, false, "Noon"},
    {0.5625f, false, "Afternoon"}, {0.75f, false, "Dusk"},        {0.8125f, true, "Evening"}};

struct Weather {
    float percent;
    const char *name;
};
constexpr Weather kWeathers[] = {
    {52.5f, "Clear"}, {24.0f, "Cloudy"}, {15.5f, "Rain"}, {5.0f, "Storm"}, {3.0f, "Ash Fall"}};

constexpr std::uint32_t kSceneryGroups = 24;

void writeCount(ZPMutableDataCursor &record, std::size_t count) {
    record.writeLittleInt32(static_cast<std::uint32_t>(count));
}

/// A 16-bit length, then Windows-1252 bytes.
void writeString(ZPMutableDataCursor &record, std::string_view text, bool align) {
    const ZPData bytes = ZPWindows1252FromString(text);
    record.writeLittleInt16(static_cast<std::uint16_t>(bytes.size()));
    record.writeData(bytes);
    if (align)
        record.alignToFourByteBoundary();
}

void writeCalendar(ZPMutableDataCursor &record) {
    writeCount(record, std::size(kTimes));
    for (const TimeOfDay &time : kTimes) {
        record.writeLittleFloat32(time.start);
        record.writeLittleInt32(time.isNight ? 1 : 0);
        writeString(record, time.name, true);
    }
    writeCount(record, std::size(kDayNames));
    for (const char *name : kDayNames)
        writeString(record, name, true);
    writeCount(record, std::size(kMonthNames));
    for (std::uint32_t i = 0; i < std::size(kMonthNames); ++i) {
        record.writeLittleInt32(i * kDaysPerMonth);
        writeString(record, kMonthNames[i], true);
    }
}

/// Light and fog over one part of the day, with what falls from the sky.
void writeAnimationGroup(ZPMutableDataCursor &record, std::uint32_t weather, float start) {
    for (const float value : {start, 0.85f, 45.0f + start, 60.0f})
        record.writeLittleFloat32(value);
    record.writeLittleInt32(0xFFC8C8C8);
    record.writeLittleFloat32(0.5f);
    record.writeLittleInt32(0xFF646464);
    record.writeLittleFloat32(120.0f);
    record.writeLittleFloat32(1200.0f);
    record.writeLittleInt32(0xFFB4C8DC);
    record.writeLittleInt32(weather);
    writeCount(record, 2);
    for (std::uint32_t item = 0; item < 2; ++item) {
        record.writeLittleInt32(item);
        record.writeLittleInt32(0x01000F00 + weather * 16 + item);
        record.writeLittleFloat32(0.25f * static_cast<float>(item + 1));
        for (const float value : {0.0f, 1.5f, -3.25f})
            record.writeLittleFloat32(value);
    }
}

void writeWeather(ZPMutableDataCursor &record) {
    writeCount(record, std::size(kWeathers));
    for (std::uint32_t i = 0; i < std::size(kWeathers); ++i) {
        record.writeLittleFloat32(kWeathers[i].percent);
        writeString(record, kWeathers[i].name, true);
        writeCount(record, i + 1);
        for (std::uint32_t model = 0; model <= i; ++model) {
            for (const float value :
                 {0.0f, 1.0f, 0.0f, 360.0f, 0.01f * static_cast<float>(i), 0.0f})
                record.writeLittleFloat32(value);
            record.writeLittleInt32(0x010015EE + model);
            record.writeLittleInt32(0x33000400 + i);
            record.writeLittleInt32(model); // present since data version 1394
        }
        writeCount(record, 2);
        for (const float start : {0.0f, 0.5f})
            writeAnimationGroup(record, i, start);
    }
}

void writeScenery(ZPMutableDataCursor &record) {
    constexpr std::uint32_t kReferenceSets = 4;
    writeCount(record, kReferenceSets);
    for (std::uint32_t set = 0; set < kReferenceSets; ++set) {
        record.writeLittleInt32(0x20000040 + set);
        writeCount(record, set + 1);
        for (std::uint32_t i = 0; i <= set; ++i) {
            record.writeLittleInt32(0x0A000100 + set * 8 + i);
            for (const float value : {0.5f, 0.25f, 8.0f, 30.0f})
                record.writeLittleFloat32(value);
        }
    }
    writeCount(record, kSceneryGroups);
    for (std::uint32_t group = 0; group < kSceneryGroups; ++group) {
        record.writeLittleInt32(group % kReferenceSets);
        writeCount(record, 1 + group % 3);
        for (std::uint32_t i = 0; i <= group % 3; ++i)
            record.writeLittleInt32(0x12000000 + group * 4 + i);
    }
}

void writeLandTypes(ZPMutableDataCursor &record) {
    writeCount(record, std::size(kLandTypes));
    for (std::uint32_t i = 0; i < std::size(kLandTypes); ++i) {
        writeString(record, kLandTypes[i].name, true);
        for (const std::uint8_t part : {kLandTypes[i].blue, kLandTypes[i].green, kLandTypes[i].red})
            record.writeByte(part);
        record.writeByte(0xFF);
        writeCount(record, 3);
        for (std::uint32_t k = 0; k < 3; ++k)
            record.writeLittleInt32((i % 8 * 3 + k) % kSceneryGroups);
    }
}

void writeTextures(ZPMutableDataCursor &record) {
    record.writeLittleInt32(1);
    record.writeLittleInt32(1024);
    for (std::uint32_t blend = 0; blend < 3; ++blend) {
        writeCount(record, blend + 2);
        for (std::uint32_t i = 0; i < blend + 2; ++i) {
            record.writeLittleInt32(blend * 8 + i);
            record.writeLittleInt32(0x05001700 + blend * 16 + i);
        }
    }
    writeCount(record, std::size(kLandTypes));
    for (std::uint32_t i = 0; i < std::size(kLandTypes); ++i)
        for (const std::uint32_t word :
             {i, 0x05001C00 + i, 2u, 90u, 110u, 5u, 10u, 3u, 2u, 0x05001D00 + i, 1u})
            record.writeLittleInt32(word);
    for (std::uint32_t i = 0; i < 6; ++i)
        record.writeLittleInt32(i == 0 ? 0x01000000 + 0x2F : i);
}

} // namespace

std::vector<std::byte> SampleRegionRecord() {
    ZPMutableDataCursor record;
    record.writeLittleInt32(SampleRegionIdentifier);
    record.writeLittleInt32(1);
    record.writeLittleInt32(3);
    writeString(record, "Ostvale", false);
    record.writeLittleInt32(SampleBlocksPerSide);
    record.writeLittleInt32(SampleBlocksPerSide);
    record.writeLittleFloat32(24);
    record.writeLittleInt32(SampleCellsPerBlock);
    record.writeLittleInt32(1);
    for (const float value : {200.0f, 1000.0f, 5.0f})
        record.writeLittleFloat32(value);
    for (const float height : SampleLandHeights())
        record.writeLittleFloat32(height);
    record.writeLittleFloat64(3600.0);
    record.writeLittleInt32(10);
    record.writeLittleFloat32(7620);
    record.writeLittleInt32(kDaysPerMonth * static_cast<std::uint32_t>(std::size(kMonthNames)));
    record.writeLittleInt32(1);
    record.writeLittleInt32(0);
    writeCalendar(record);
    record.writeLittleInt32(1);
    record.writeLittleFloat64(0.5);
    record.writeLittleFloat64(20.0);
    writeWeather(record);
    writeScenery(record);
    writeLandTypes(record);
    writeTextures(record);
    return record.takeData();
}
