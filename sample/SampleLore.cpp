#include "sample/SampleLore.h"

#include "io/ZPMutableDataCursor.h"
#include "io/ZPText.h"
#include "sample/SampleRandom.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace {

constexpr std::uint32_t firstTownship = 0x40000001, firstTrader = 0x41000001,
                        firstChronicle = 0x42000001;
constexpr std::uint32_t tradersPerTown = 3, chronicles = 6;
constexpr std::uint32_t firstImage = 0x06000001, imageCount = 40;

constexpr const char *firstNames[] = {"Aldo", "Berit", "Corin", "Dagný", "Edda", "Fenn", "Gisla"};
constexpr const char *lastNames[] = {"Ashford", "Boatwright", "Candler", "Dyer", "Ferrier"};
constexpr const char *greetings[] = {"Mind the step.", "Fresh from the harbour – look!",
                                     "“Good wares, fair weights.”", "We close at dusk."};
constexpr const char *events[] = {"The ford was flooded.", "A lamp was set up at the gate.",
                                  "Boars broke the fence of the mill.", "The price of salt rose.",
                                  "A stranger asked for the way to the caves."};

template <std::size_t Count>
const char *anyOf(const char *const (&texts)[Count], SampleRandom &random) {
    return texts[random.below(static_cast<std::uint32_t>(Count))];
}

void writeText16(ZPMutableDataCursor &record, std::string_view text) {
    const ZPData bytes = ZPWindows1252FromString(text);
    record.writeLittleInt16(static_cast<std::uint16_t>(bytes.size()));
    record.writeData(bytes);
    record.alignToFourByteBoundary();
}

std::vector<std::byte> townshipRecord(const SampleWorld &world, std::uint32_t number) {
    constexpr double west = -101.9, south = -101.9, pointsPerUnit = 10;
    const SampleTown &town = world.towns()[number];
    SampleRandom random(SampleHash(world.options().seed ^ 0x40, number));
    ZPMutableDataCursor record;
    record.writeLittleInt32(firstTownship + number);
    writeText16(record, town.name);
    record.writeLittleFloat32(static_cast<float>(west + town.x / pointsPerUnit));
    record.writeLittleFloat32(static_cast<float>(south + town.y / pointsPerUnit));
    const std::uint32_t size = random.below(4), terrain = 7, lamps = 10 + random.below(200);
    record.writeLittleInt16(static_cast<std::uint16_t>(size | (town.isPort ? 1u : 0u) << 2 |
                                                       terrain << 3 | lamps << 8));
    record.wq_writePackedLittleInt30(tradersPerTown);
    for (std::uint32_t trader = 0; trader < tradersPerTown; ++trader)
        record.writeLittleInt32(firstTrader + number * tradersPerTown + trader);
    record.alignToFourByteBoundary();
    return record.takeData();
}

std::vector<std::byte> traderRecord(const SampleWorld &world, std::uint32_t number) {
    SampleRandom random(SampleHash(world.options().seed ^ 0x41, number));
    ZPMutableDataCursor record;
    record.writeLittleInt32(firstTrader + number);
    const std::string lastName = anyOf(lastNames, random);
    record.wq_writeVar30String(anyOf(firstNames, random) + (" " + lastName), true);
    const std::uint32_t habits = random.below(8);
    record.writeLittleInt32(habits | (random.chance(0.2) ? 0x10 : 0));
    record.writeLittleInt32(firstTownship + number / tradersPerTown);
    const std::uint32_t wares = 1 + random.below(4);
    record.writeLittleInt16(static_cast<std::uint16_t>(wares));
    for (std::uint32_t ware = 0; ware < wares; ++ware) {
        record.writeLittleInt32(firstImage + random.below(imageCount));
        // The price of salt rose.
        const std::uint32_t price = 5 + random.below(500);
        record.writeLittleInt32(ware == 0 && !world.options().older ? price + price / 8 + 1
                                                                    : price);
        record.writeLittleInt16(static_cast<std::uint16_t>(random.below(40) - 4));
    }
    record.wq_writeVar30UTF16String(anyOf(greetings, random), true);
    return record.takeData();
}

std::vector<std::byte> chronicleRecord(const SampleWorld &world, std::uint32_t number) {
    SampleRandom random(SampleHash(world.options().seed ^ 0x42, number));
    const auto towns = static_cast<std::uint32_t>(world.towns().size());
    // The older world does not know the last entry yet.
    const std::uint32_t entries = 3 + random.below(5) - (world.options().older ? 1 : 0);
    ZPMutableDataCursor record;
    record.writeLittleInt32(firstChronicle + number);
    record.writeByte(static_cast<std::uint8_t>(entries));
    std::uint32_t year = 410 + number * 10;
    for (std::uint32_t entry = 0; entry < entries; ++entry) {
        record.writeBigInt16(static_cast<std::uint16_t>(year += random.below(3)));
        const std::uint32_t month = 1 + random.below(12);
        record.writeByte(static_cast<std::uint8_t>(month | random.below(5) << 4));
        const std::uint32_t concerned = std::min(towns, random.below(3));
        record.writeByte(static_cast<std::uint8_t>(concerned));
        for (std::uint32_t town = 0; town < concerned; ++town)
            record.writeLittleInt32(firstTownship + random.below(towns));
        writeText16(record, anyOf(events, random));
    }
    return record.takeData();
}

} // namespace

void SampleForEachLoreRecord(const SampleWorld &world,
                             const std::function<void(std::uint32_t identifier,
                                                      const std::vector<std::byte> &record)> &add) {
    const auto towns = static_cast<std::uint32_t>(world.towns().size());
    for (std::uint32_t number = 0; number < towns; ++number)
        add(firstTownship + number, townshipRecord(world, number));
    for (std::uint32_t number = 0; number < towns * tradersPerTown; ++number)
        add(firstTrader + number, traderRecord(world, number));
    for (std::uint32_t number = 0; number < chronicles; ++number)
        add(firstChronicle + number, chronicleRecord(world, number));
}
