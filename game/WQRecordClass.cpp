#include "game/WQRecordClass.h"

#include "game/WQLandBlock.h"
#include "game/WQUndecodedObject.h"
#include "game/WQVersion.h"
#include "game/WQWorldInfo.h"

#include <algorithm>

namespace {

template <class Record>
std::unique_ptr<ZPGorvaneStoredObject>
newRecord(const WQRecordClass &, std::span<const std::byte> data, ZPGorvaneClientData *clientData) {
    return ZPNewRecordWithData<Record>(data, clientData);
}

template <class Base>
std::unique_ptr<ZPGorvaneStoredObject> newUndecodedRecord(const WQRecordClass &recordClass,
                                                          std::span<const std::byte> data,
                                                          ZPGorvaneClientData *clientData) {
    auto record = ZPNewRecordWithData<WQUndecodedObject<Base>>(data, clientData);
    if (record != nullptr)
        record->setClassName(recordClass.name);
    return record;
}

template <class Record>
constexpr WQRecordClass decoded(const char *name) {
    return {name, Record::isIdentifierInData, &newRecord<Record>};
}

template <class Base = WQPortalObject>
constexpr WQRecordClass undecoded(const char *name) {
    return {name, true, &newUndecodedRecord<Base>};
}

struct PortalRow {
    std::uint8_t type;
    /// 0 where all identifiers of the type belong to the class.
    std::uint32_t identifier;
    WQRecordClass recordClass;
};

constexpr PortalRow kPortalRows[] = {
    {0x01, 0, undecoded("WQModelLeaf")},
    {0x02, 0, undecoded("WQModelGroup")},
    {0x03, 0, undecoded("WQAnimation")},
    {0x04, 0, undecoded("WQPalette")},
    {0x05, 0, undecoded("WQType05")},
    {0x06, 0, undecoded("WQImage")},
    {0x08, 0, undecoded("WQType08")},
    {0x09, 0, undecoded("WQAnimationStrip")},
    {0x0A, 0, undecoded("WQSound")},
    {0x0D, 0, undecoded("WQDungeonTileGroup")},
    {0x0E, 0x0E000002, undecoded("WQCharacterCreation")},
    {0x0E, 0x0E000004, undecoded("WQSkillTable")},
    {0x0E, 0x0E000007, undecoded("WQEmoteTable")},
    {0x0E, 0x0E00000D, undecoded("WQWeenieObjectTree")},
    {0x0E, 0x0E00000E, undecoded("WQSpellTable")},
    {0x0E, 0x0E00000F, undecoded("WQComponentTable")},
    {0x0E, 0x0E000018, undecoded("WQExperienceTable")},
    {0x0E, 0x0E00001A, undecoded("WQTable_1a")},
    {0x0E, 0x0E00001D, undecoded("WQContractTable")},
    {0x0E, 0x0E00001E, undecoded("WQTabooTable")},
    {0x0F, 0, undecoded("WQPaletteGroup")},
    {0x10, 0, undecoded("WQType10")},
    {0x11, 0, undecoded("WQDiscreteLODTable")},
    {0x12, 0, undecoded("WQTerrainObjectGroup")},
    {0x13, 0x13000000, decoded<WQWorldInfo>("WQWorldInfo")},
    {0x20, 0, undecoded("WQSoundTable")},
    {0x22, 0, undecoded("WQEnumeration")},
    {0x23, 0, undecoded("WQLocalStringTable")},
    {0x25, 0, undecoded("WQAssociation")},
    {0x27, 0, undecoded("WQAssociation")},
    {0x30, 0, undecoded("WQType30")},
    {0x31, 0, undecoded("WQCharacterCreationText")},
    {0x32, 0, undecoded("WQParticleEmitter")},
    {0x33, 0, undecoded("WQParticleEffect")},
    {0x34, 0, undecoded("WQParticleEffectLODTable")},
    {0x39, 0x39000001, undecoded("WQInterface1")},
    {0xFF, 0xFFFF0001, decoded<WQVersion>("WQVersion")},
};

constexpr WQRecordClass kVersion = decoded<WQVersion>("WQVersion");
constexpr WQRecordClass kLandBlock = decoded<WQLandBlock>("WQLandBlock");
constexpr WQRecordClass kObjectBlock = undecoded<WQCellObject>("WQObjectBlock");
constexpr WQRecordClass kDungeonBlock = undecoded<WQCellObject>("WQDungeonBlock");

} // namespace

const WQRecordClass *WQRecordClassForPortalIdentifier(std::uint32_t identifier) {
    const auto *row = std::ranges::find_if(kPortalRows, [=](const PortalRow &candidate) {
        return candidate.type == identifier >> 24 &&
               (candidate.identifier == 0 || candidate.identifier == identifier);
    });
    return row != std::end(kPortalRows) ? &row->recordClass : nullptr;
}

const WQRecordClass &WQRecordClassForCellIdentifier(std::uint32_t identifier) {
    switch (identifier & 0xFFFF) {
    case 0xFFFE: return kObjectBlock;
    case 0xFFFF: return kLandBlock;
    default: return identifier == 0xFFFF0001 ? kVersion : kDungeonBlock;
    }
}
