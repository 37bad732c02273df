#include "tests/ArchiveBytes.h"
#include "tests/BlockFileBytes.h"
#include "tests/ProgramRun.h"
#include "tests/TestSupport.h"

#include "game/WQClientData.h"
#include "game/WQRetailClientData.h"
#include "game/WQUndecodedObject.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>

namespace {

std::string nameOf(const ZPGorvaneStoredObject *object) {
    return object != nullptr ? object->className() : "none";
}

std::string portalClass(std::uint32_t identifier) {
    const WQRecordClass *found = WQClientData::objectClassForPortalIdentifier(identifier);
    return found != nullptr ? found->name : "none";
}

TEST(ClientData, ClassesByIdentifier) {
    const std::map<unsigned, const char *> byType = {{0x01, "WQModelLeaf"},
                                                     {0x02, "WQModelGroup"},
                                                     {0x03, "WQAnimation"},
                                                     {0x04, "WQPalette"},
                                                     {0x05, "WQType05"},
                                                     {0x06, "WQImage"},
                                                     {0x08, "WQType08"},
                                                     {0x09, "WQAnimationStrip"},
                                                     {0x0A, "WQSound"},
                                                     {0x0D, "WQDungeonTileGroup"},
                                                     {0x0F, "WQPaletteGroup"},
                                                     {0x10, "WQType10"},
                                                     {0x11, "WQDiscreteLODTable"},
                                                     {0x12, "WQTerrainObjectGroup"},
                                                     {0x20, "WQSoundTable"},
                                                     {0x22, "WQEnumeration"},
                                                     {0x23, "WQLocalStringTable"},
                                                     {0x25, "WQAssociation"},
                                                     {0x27, "WQAssociation"},
                                                     {0x30, "WQType30"},
                                                     {0x31, "WQCharacterCreationText"},
                                                     {0x32, "WQParticleEmitter"},
                                                     {0x33, "WQParticleEffect"},
                                                     {0x34, "WQParticleEffectLODTable"}};
    const std::map<std::uint32_t, const char *> byIdentifier = {{0x0E000002, "WQCharacterCreation"},
                                                                {0x0E000004, "WQSkillTable"},
                                                                {0x0E000007, "WQEmoteTable"},
                                                                {0x0E00000D, "WQWeenieObjectTree"},
                                                                {0x0E00000E, "WQSpellTable"},
                                                                {0x0E00000F, "WQComponentTable"},
                                                                {0x0E000018, "WQExperienceTable"},
                                                                {0x0E00001A, "WQTable_1a"},
                                                                {0x0E00001D, "WQContractTable"},
                                                                {0x0E00001E, "WQTabooTable"},
                                                                {0x13000000, "WQWorldInfo"},
                                                                {0x39000001, "WQInterface1"},
                                                                {0xFFFF0001, "WQVersion"}};
    for (std::uint32_t type = 0; type < 256; ++type)
        for (const std::uint32_t rest : {0u, 1u, 0xFFFFFFu}) {
            const std::uint32_t identifier = type << 24 | rest;
            const auto only = byIdentifier.find(identifier);
            const auto all = byType.find(type);
            EXPECT_EQ(portalClass(identifier), only != byIdentifier.end() ? only->second
                                               : all != byType.end()      ? all->second
                                                                          : "none")
                << std::hex << identifier;
        }
    for (const auto &[identifier, name] : byIdentifier) {
        EXPECT_EQ(portalClass(identifier), name);
        for (const std::uint32_t other : {identifier - 1, identifier + 1}) {
            const bool isNamed = byType.contains(other >> 24) || byIdentifier.contains(other);
            EXPECT_EQ(portalClass(other) != "none", isNamed) << std::hex << other;
        }
    }
    for (const WQRecordClass &recordClass : WQPortalRecordClasses())
        EXPECT_EQ(recordClass.isDecoded, recordClass.name == std::string("WQWorldInfo") ||
                                             recordClass.name == std::string("WQVersion"));
    EXPECT_EQ(std::string("WQObjectBlock"), WQRecordClassForCellIdentifier(0x1234FFFE).name);
    EXPECT_EQ(std::string("WQLandBlock"), WQRecordClassForCellIdentifier(0x1234FFFF).name);
    EXPECT_EQ(std::string("WQDungeonBlock"), WQRecordClassForCellIdentifier(0x12340100).name);
    EXPECT_EQ(std::string("WQDungeonBlock"), WQRecordClassForCellIdentifier(0x12340001).name);
    EXPECT_EQ(std::string("WQVersion"), WQRecordClassForCellIdentifier(0xFFFF0001).name);
}

TEST(ClientData, RegistryAloneKnowsBothClassesBeforeMain) {
    const ProgramRun run = runProgram({PLOTTERRA_REGISTRATION_PROBE});
    EXPECT_EQ(run.status, 0) << run.log;
    const std::string name = "+[ZPGorvaneClientData registerClientDataClass:forGorvaneGame:], "
                             "clientDataClassesByGame: {";
    const std::string first = " \"Ostvale\" = WQClientData;";
    const std::string retail = " \"Ostvale (retail)\" = WQRetailClientData;";
    const auto lines = ZPSplitText(run.log, '\n');
    ASSERT_GE(lines.size(), 4u) << run.log;
    EXPECT_EQ(lines[0], "begins");
    EXPECT_TRUE(lines[1].ends_with("] " + name + first + " }")) << run.log;
    EXPECT_TRUE(lines[2].ends_with("] " + name + first + retail + " }")) << run.log;
    EXPECT_TRUE(lines[3].ends_with("] main")) << run.log;
    EXPECT_EQ(run.output, "basePath: /nonexistent\n");
    EXPECT_STREQ(ZPGorvaneClientData::clientDataClassForGorvaneGame(ZPGorvaneGame::first)->name,
                 "WQClientData");
    EXPECT_EQ(ZPGorvaneClientData::clientDataClassForGorvaneGame(ZPGorvaneGame::second), nullptr);
}

TEST(ClientData, WithoutADirectoryThereIsNothing) {
    WQClientData clientData;
    clientData.loadAllFileEntries();
    EXPECT_EQ(clientData.cellDataFile(), nullptr);
    EXPECT_EQ(clientData.dataFileWithName("portal"), nullptr);
    EXPECT_EQ(clientData.dataFileOfType(1), nullptr);
    EXPECT_EQ(clientData.worldInfo(), nullptr);
    EXPECT_EQ(clientData.newCellObjectWithIdentifier(0x1234FFFF), nullptr);
    EXPECT_FALSE(clientData.soundWithIdentifier(0x0A000001));
    const WQDataFile dataFile("/nonexistent");
    EXPECT_EQ(clientData.newObjectForFileEntry({}, dataFile), nullptr);
}

TEST(ClientData, WithoutArchivesEverythingIsThereAndEmpty) {
    const TemporaryFolder folder;
    CapturedLog captured;
    WQClientData clientData(folder.path());
    clientData.loadAllFileEntries();
    EXPECT_EQ(clientData.worldInfo(), nullptr);
    EXPECT_EQ(clientData.skillTable(), nullptr);
    EXPECT_EQ(clientData.newCellObjectWithIdentifier(0x1234FFFF), nullptr);
    EXPECT_FALSE(clientData.paletteWithIdentifier(0x04000001));
    const std::string log = captured.take();
    std::size_t at = 0;
    for (const char *name : {"portal.dat", "highres.dat", "cell_1.dat", "local_English.dat"}) {
        at = log.find(ZPFormat("client_%s\n", name), at);
        EXPECT_NE(at, std::string::npos) << name << log;
    }
    for (const auto &[name, type] :
         {std::pair{"portal", 0u}, {"highres", 1u}, {"cell", 2u}, {"local", 3u}})
        EXPECT_EQ(clientData.dataFileWithName(name)->type(), type);
    for (const char *name : {"portal", "highres", "cell", "local"}) {
        const WQDataFile *dataFile = clientData.dataFileWithName(name);
        EXPECT_EQ(clientData.dataFileOfType(dataFile->type()), dataFile);
    }
    EXPECT_EQ(clientData.dataFileWithName("Portal"), nullptr);
    EXPECT_EQ(clientData.dataFileWithName(""), nullptr);
    EXPECT_EQ(clientData.dataFileOfType(4), nullptr);
}

TEST(ClientData, GamesAreKnownByKeyAndName) {
    const std::tuple<const char *, ZPGorvaneGame, const char *> games[] = {
        {"ostvale", ZPGorvaneGame::first, "Ostvale"},
        {"ostvale-retail", ZPGorvaneGame::firstRetail, "Ostvale (retail)"},
        {"ostvale2", ZPGorvaneGame::second, "Ostvale II"},
        {"Ostvale", ZPGorvaneGame::unknown, "Unknown"},
        {"", ZPGorvaneGame::unknown, "Unknown"}};
    for (const auto &[key, game, name] : games) {
        EXPECT_EQ(ZPGorvaneGameWithKey(key), game) << key;
        EXPECT_STREQ(ZPGorvaneGameDisplayName(game), name);
    }
}

/// A directory with a portal and a cell archive.
class ClientDataLookup : public testing::Test {
  protected:
    ClientDataLookup() {
        ArchiveBytes portal, cell;
        for (const std::uint32_t identifier :
             {0x04000001u, 0x0A000001u, 0x0F000001u, 0x07000001u, 0x20000001u})
            portal.addFile(identifier, words({identifier, 1, 2}));
        portal.addFile(0x06000001, words({0x06000002})); // misnamed
        portal.addFile(0x06000003, hex("0300"));         // too short
        portal.addEntry(0x06000004, {0x404, 4, 0, 1});   // nowhere
        portal.addFile(0xFFFF0001, words({1394}));
        portal.writeToPath(_folder / "client_portal.dat");
        cell.addFile(0x1234FFFE, words({0x1234FFFE, 5}));
        cell.addFile(0x12340100, words({0x12340100}));
        cell.addFile(0xFFFF0001, words({7}));
        cell.writeToPath(_folder / "client_cell_1.dat");
        _clientData.emplace(_folder.path());
    }

    CapturedLog _captured;
    TemporaryFolder _folder;
    std::optional<WQClientData> _clientData;
};

TEST_F(ClientDataLookup, Records) {
    EXPECT_EQ(nameOf(_clientData->newPortalObjectWithIdentifier(0x07000001).get()), "none");
    const auto version = _clientData->newPortalObjectWithIdentifier(0xFFFF0001);
    EXPECT_EQ(nameOf(version.get()), "WQVersion");
    EXPECT_EQ(version->identifier(), 0xFFFF0001u);
    EXPECT_EQ(_clientData->newHighresObjectWithIdentifier(0x04000001), nullptr);

    const auto image = _clientData->imageWithIdentifier(0x06000001);
    const auto *undecoded = dynamic_cast<const WQUndecodedPortalObject *>(image.get());
    ASSERT_NE(undecoded, nullptr);
    EXPECT_EQ(undecoded->data(), words({0x06000002}));
    EXPECT_EQ(_clientData->imageWithIdentifier(0x04000001), nullptr);
    EXPECT_EQ(_clientData->soundTableWithIdentifier(0x20000001)->identifier(), 0x20000001u);
    EXPECT_EQ(_clientData->soundTableWithIdentifier(0x0A000001), nullptr);
    EXPECT_EQ(_clientData->imageWithIdentifier(0x06000003), nullptr);
    EXPECT_EQ(_clientData->imageWithIdentifier(0x06000004), nullptr);

    EXPECT_EQ(nameOf(_clientData->newCellObjectWithIdentifier(0x12340100).get()), "WQDungeonBlock");
    EXPECT_EQ(nameOf(_clientData->newCellObjectWithIdentifier(0xFFFF0001).get()), "WQVersion");
    WQDataFile &cell = *_clientData->cellDataFile();
    EXPECT_EQ(cell.fileEntriesByLandBlock(0x1234).size(), 2u);
    const ZPGorvaneFileEntry &entry = *cell.fileEntryWithIdentifier(0x1234FFFE);
    EXPECT_EQ(nameOf(_clientData->newObjectForFileEntry(entry, cell).get()), "WQObjectBlock");
    const WQDataFile other(_folder / "client_cell_1.dat");
    EXPECT_EQ(_clientData->newObjectForFileEntry(entry, other), nullptr);

    const std::string log = _captured.take();
    EXPECT_NE(log.find("Warning: Identifier stored in file (06000002) doesn't match identifier "
                       "passed in (06000001)"),
              std::string::npos);
}

TEST_F(ClientDataLookup, Tables) {
    const std::pair<const ZPGorvaneStoredObject *(WQClientData::*)(), std::uint32_t> tables[] = {
        {&WQClientData::titleTable, 0x22000041},     {&WQClientData::skillTable, 0x0E000004},
        {&WQClientData::componentTable, 0x0E00000F}, {&WQClientData::spellTable, 0x0E00000E},
        {&WQClientData::speciesTable, 0x2200000E},   {&WQClientData::raceTable, 0x2200000B},
        {&WQClientData::genderTable, 0x2200000A},    {&WQClientData::materialTable, 0x27000000},
        {&WQClientData::contractTable, 0x0E00001D}};
    ArchiveBytes portal;
    for (const auto &[table, identifier] : tables) {
        EXPECT_EQ(((*_clientData).*table)(), nullptr);
        portal.addFile(identifier, words({identifier}));
    }
    portal.writeToPath(_folder / "client_portal.dat");
    WQClientData clientData(_folder.path());
    for (const auto &[table, identifier] : tables) {
        const ZPGorvaneStoredObject *record = (clientData.*table)();
        ASSERT_NE(record, nullptr) << std::hex << identifier;
        EXPECT_EQ(record->identifier(), identifier);
        EXPECT_EQ((clientData.*table)(), record);
    }
}

TEST_F(ClientDataLookup, Caches) {
    EXPECT_FALSE(_clientData->paletteWithIdentifier(0x0A000001));
    WQRecordCache &palettes = _clientData->paletteCache(), &sounds = _clientData->soundCache();
    EXPECT_EQ(palettes.count(), 0u);
    EXPECT_EQ(palettes.name(), "Palette cache");
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back([&] {
                for (int round = 0; round < 200; ++round)
                    EXPECT_EQ(_clientData->paletteWithIdentifier(0x04000001)->className(),
                              std::string("WQPalette"));
            });
    }
    EXPECT_EQ(palettes.count(), 1u);
    palettes.removeUnusedObjects(); // a palette stays in use
    EXPECT_EQ(palettes.count(), 1u);
    EXPECT_EQ(nameOf(&*_clientData->paletteGroupWithIdentifier(0x0F000001)), "WQPaletteGroup");

    const auto sound = _clientData->soundWithIdentifier(0x0A000001);
    EXPECT_EQ(&*_clientData->soundWithIdentifier(0x0A000001), &*sound);
    EXPECT_EQ(sounds.totalCost(), 12u);
}

/// Notes which records leave.
struct Leaving : WQRecordCache::Delegate {
    void cache(WQRecordCache &, const ZPGorvaneStoredObject &willEvictObject) override {
        identifiers.push_back(willEvictObject.identifier());
    }
    std::vector<std::uint32_t> identifiers;
};

TEST(RecordCache, EvictsTheLeastRecentlyUsedOfThoseNotInUse) {
    Leaving leaving;
    WQRecordCache cache("", &leaving);
    const auto put = [&](std::uint32_t key, bool isPinned = false) {
        return cache.setObject(std::make_unique<ZPGorvaneStoredObject>(key), key, 10, isPinned);
    };
    for (const std::uint32_t key : {1u, 2u, 3u})
        (void)put(key);
    (void)cache.objectForKey(1);
    cache.setTotalCostLimit(30);
    auto fourth = put(4); // the second is the oldest use, not the oldest record
    EXPECT_EQ(leaving.identifiers, std::vector{2u});
    auto third = cache.objectForKey(3), first = cache.objectForKey(1);
    put(5, true); // all in use: over the limit
    EXPECT_EQ(cache.totalCost(), 40u);
    third = {};
    EXPECT_EQ(leaving.identifiers, (std::vector{2u, 3u}));
    EXPECT_FALSE(cache.objectForKey(3));
    first = {}, fourth = {};
    cache.removeUnusedObjects();
    EXPECT_EQ(leaving.identifiers, (std::vector{2u, 3u, 4u, 1u}));
    EXPECT_EQ(cache.count(), 1u);
    EXPECT_TRUE(cache.objectForKey(5));
}

TEST(RecordCache, AnotherRecordUnderTheSameKeyTakesThePlace) {
    Leaving leaving;
    WQRecordCache cache("", &leaving);
    // The records differ in their identifiers; the key is the same.
    const auto put = [&](std::uint32_t identifier, bool isPinned = false) {
        return cache.setObject(std::make_unique<ZPGorvaneStoredObject>(identifier), 7, 10,
                               isPinned);
    };
    const auto found = [&] { return cache.objectForKey(7)->identifier(); };
    put(1);
    auto second = put(2, true);
    EXPECT_EQ(leaving.identifiers, std::vector{1u});
    put(3);
    EXPECT_EQ(found(), 3u);
    EXPECT_EQ(second->identifier(), 2u); // in use until it is let go
    EXPECT_EQ(cache.totalCost(), 20u);
    second = {};
    EXPECT_EQ(leaving.identifiers, (std::vector{1u, 2u}));
    EXPECT_EQ(found(), 3u);
    EXPECT_EQ(cache.totalCost(), 10u);
    EXPECT_EQ(cache.count(), 1u);

    // A pin goes with its record: at once where nobody else uses that.
    put(4, true);
    put(5, true);
    EXPECT_EQ(leaving.identifiers, (std::vector{1u, 2u, 3u, 4u}));
    EXPECT_EQ(cache.count(), 1u);
    cache.removeUnusedObjects();
    EXPECT_EQ(found(), 5u);
}

TEST(RetailClientData, OpensItsTwoArchives) {
    const TemporaryFolder folder;
    BlockFileBytes file(3);
    file.putChain({0x400}, nodeBytes({}, 1, words({0xFFFF0001, 0x800, 4}), 996));
    file.putChain({0x800}, words({9}));
    file.rootOffset = 0x400;
    file.putHeader(1);
    file.writeToPath(folder / "cell.dat");
    CapturedLog captured;
    testing::internal::CaptureStdout();
    WQRetailClientData clientData(folder.path());
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(
        output.find("basePath: " + folder.path().string() + "\nportal:   <WQRetailDataFile: "), 0u);
    EXPECT_NE(output.find("\ncell:     <WQRetailDataFile: "), std::string::npos);
    EXPECT_NE(clientData.cellDataFile()->dataVersion(), nullptr);
    EXPECT_EQ(clientData.portalDataFile()->dataVersion(), nullptr);
    EXPECT_EQ(clientData.dataFileWithName("cell"), clientData.cellDataFile());
    EXPECT_EQ(clientData.dataFileWithName("local"), nullptr);
}

} // namespace
