#include "sample/SampleRecords.h"

#include "io/ZPMutableDataCursor.h"
#include "sample/SampleArchiveWriter.h"
#include "sample/SampleLore.h"
#include "sample/SampleRandom.h"
#include "sample/SampleRegionRecord.h"

#include <string_view>

namespace {

constexpr std::uint32_t kCurrentVersion = 2072;
constexpr std::uint32_t kOlderVersion = 1893;
constexpr std::uint32_t kFirstOfJanuary2003 = 1041379200;
constexpr std::uint32_t kSecondsInAYear = 31557600;

/// Adds the files of an archive until one cannot be written.
class ArchiveFiller {
  public:
    ArchiveFiller(const SampleWorld &world, ZPAtomicFile &file, std::uint32_t contentSubtype,
                  ZPError *error)
        : _options(world.options()),
          _archive(file, {.blockSize = 1024, .contentType = 1, .contentSubtype = contentSubtype},
                   SampleHash(_options.seed, 60 + contentSubtype)),
          _error(error) {}

    void add(std::uint32_t identifier, const std::vector<std::byte> &record) {
        _isWhole =
            _isWhole && _archive.addFile(SampleStampedEntry(_options, identifier), record, _error);
    }
    bool finish() {
        add(SampleVersionIdentifier, SampleVersionRecord(_options));
        return _isWhole && _archive.finish(_error);
    }

  private:
    const SampleOptions &_options;
    SampleArchiveWriter _archive;
    ZPError *_error;
    bool _isWhole = true;
};

/// 256 colours, blue first, alpha last.
std::vector<std::byte> paletteRecord(std::uint32_t identifier, SampleRandom &random) {
    constexpr std::uint32_t kColours = 256;
    const std::uint32_t from = random.below(0x1000000), to = random.below(0x1000000);
    ZPMutableDataCursor record;
    record.writeLittleInt32(identifier);
    record.writeLittleInt32(kColours);
    for (std::uint32_t i = 0; i < kColours; ++i) {
        for (int shift = 0; shift < 24; shift += 8) {
            const std::uint32_t a = from >> shift & 0xFF, b = to >> shift & 0xFF;
            record.writeByte(
                static_cast<std::uint8_t>((a * (kColours - 1 - i) + b * i) / (kColours - 1)));
        }
        record.writeByte(0xFF);
    }
    return record.takeData();
}

/// Width, height, format, length and the pixels, all of one texture.
std::vector<std::byte> imageRecord(std::uint32_t identifier, std::uint32_t side,
                                   SampleRandom &random) {
    ZPMutableDataCursor record;
    for (const std::uint32_t word : {identifier, 5u, side, side, 0x15u, side * side * 4})
        record.writeLittleInt32(word);
    const std::uint32_t colour = random.below(0x1000000) | 0xFF000000;
    for (std::uint32_t i = 0; i < side * side; ++i)
        record.writeLittleInt32(colour ^ random.below(0x10) * 0x010101);
    return record.takeData();
}

/// A list of numbered names.
std::vector<std::byte> namesRecord(std::uint32_t identifier,
                                   const std::vector<std::string_view> &names) {
    ZPMutableDataCursor record;
    record.writeLittleInt32(identifier);
    record.writeLittleInt32(static_cast<std::uint32_t>(names.size()));
    for (std::uint32_t i = 0; i < names.size(); ++i) {
        record.writeLittleInt32(i);
        record.wq_writeVar30String(names[i], true);
    }
    return record.takeData();
}

} // namespace

std::vector<std::byte> SampleVersionRecord(const SampleOptions &options) {
    ZPMutableDataCursor record;
    record.writeLittleInt32(options.older ? kOlderVersion : kCurrentVersion);
    return record.takeData();
}

SampleFileEntry SampleStampedEntry(const SampleOptions &options, std::uint32_t identifier) {
    SampleRandom random(SampleHash(options.seed ^ 0x5354414D50, identifier));
    SampleFileEntry entry;
    entry.identifier = identifier;
    entry.version = 0x00020001 + random.below(3);
    entry.mtime = kFirstOfJanuary2003 + random.below(5 * kSecondsInAYear);
    entry.iteration = 1 + random.below(900);
    if (!options.older) {
        entry.mtime += 6 * kSecondsInAYear;
        entry.iteration += 1000;
    }
    return entry;
}

bool SampleWritePortalArchive(const SampleWorld &world, ZPAtomicFile &file, ZPError *error) {
    ArchiveFiller portal(world, file, 0, error);
    SampleRandom random(SampleHash(world.options().seed, 70));
    for (std::uint32_t i = 1; i <= 48; ++i)
        portal.add(0x04000000 + i, paletteRecord(0x04000000 + i, random));
    for (std::uint32_t i = 1; i <= 40; ++i)
        portal.add(0x06000000 + i, imageRecord(0x06000000 + i, 16, random));
    portal.add(SampleRegionIdentifier, SampleRegionRecord());
    portal.add(0x2200000A, namesRecord(0x2200000A, {"Invalid", "Male", "Female"}));
    portal.add(0x2200000B, namesRecord(0x2200000B, {"Invalid", "Ostvaler", "Hillman", "Fenfolk"}));
    portal.add(0x2200000E, namesRecord(0x2200000E, {"Invalid", "Marsh Wight", "Gravel Boar",
                                                    "Tide Crab", "Frost Elk", "Ash Drake"}));
    portal.add(0x22000041, namesRecord(0x22000041, {"Wayfarer", "Warden of the Ford", "Ashwalker",
                                                    "Keeper of Lamps"}));
    return portal.finish();
}

bool SampleWriteHighresArchive(const SampleWorld &world, ZPAtomicFile &file, ZPError *error) {
    ArchiveFiller highres(world, file, 1, error);
    SampleRandom random(SampleHash(world.options().seed, 71));
    for (std::uint32_t i = 1; i <= 24; ++i)
        highres.add(0x06000000 + i, imageRecord(0x06000000 + i, 64, random));
    return highres.finish();
}

bool SampleWriteLocalArchive(const SampleWorld &world, ZPAtomicFile &file, ZPError *error) {
    ArchiveFiller local(world, file, 2, error);
    std::vector<std::string_view> townNames;
    for (const SampleTown &town : world.towns())
        townNames.push_back(town.name);
    local.add(0x23000001, namesRecord(0x23000001, townNames));
    local.add(0x23000005, namesRecord(0x23000005, {"North", "East", "South", "West"}));
    local.add(0x31000001, namesRecord(0x31000001, {"You wake on a shore that you do not know.",
                                                   "The lamps of the harbour are lit."}));
    SampleForEachLoreRecord(world,
                            [&](std::uint32_t identifier, const std::vector<std::byte> &record) {
                                local.add(identifier, record);
                            });
    return local.finish();
}
