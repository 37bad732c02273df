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

/// Which identifiers a class reads.
struct Identifiers {
    std::uint8_t type = 0;
    std::optional<std::uint32_t> only;
};

constexpr Identifiers all(std::uint8_t type) {
    return {type, std::nullopt};
}

constexpr Identifiers only(std::uint32_t identifier) {
    return {WQTypeOfIdentifier(identifier), identifier};
}

/// A class with a C++ class of the same name.
template <class Record>
constexpr WQRecordClass decoded(Identifiers identifiers, const char *name) {
    return {name, identifiers.type,           identifiers.only,
            true, Record::isIdentifierInData, &newRecord<Record>};
}

template <class Base = WQPortalObject>
constexpr WQRecordClass undecoded(Identifiers identifiers, const char *name) {
    return {name, identifiers.type, identifiers.only, false, true, &newUndecodedRecord<Base>};
}

constexpr WQRecordClass kVersion = decoded<WQVersion>(only(kWQVersionIdentifier), "WQVersion");

constexpr WQRecordClass kPortalClasses[] = {
    undecoded(all(0x01), "WQModelLeaf"),
    undecoded(all(0x02), "WQModelGroup"),
    undecoded(all(0x03), "WQAnimation"),
    undecoded(all(kWQPaletteType), "WQPalette"),
    undecoded(all(0x05), "WQType05"),
    undecoded(all(kWQImageType), "WQImage"),
    undecoded(all(0x08), "WQType08"),
    undecoded(all(0x09), "WQAnimationStrip"),
    undecoded(all(kWQSoundType), "WQSound"),
    undecoded(all(0x0D), "WQDungeonTileGroup"),
    undecoded(only(0x0E000002), "WQCharacterCreation"),
    undecoded(only(kWQSkillTableIdentifier), "WQSkillTable"),
    undecoded(only(0x0E000007), "WQEmoteTable"),
    undecoded(only(0x0E00000D), "WQWeenieObjectTree"),
    undecoded(only(kWQSpellTableIdentifier), "WQSpellTable"),
    undecoded(only(kWQComponentTableIdentifier), "WQComponentTable"),
    undecoded(only(0x0E000018), "WQExperienceTable"),
    undecoded(only(0x0E00001A), "WQTable_1a"),
    undecoded(only(kWQContractTableIdentifier), "WQContractTable"),
    undecoded(only(0x0E00001E), "WQTabooTable"),
    undecoded(all(kWQPaletteGroupType), "WQPaletteGroup"),
    undecoded(all(0x10), "WQType10"),
    undecoded(all(0x11), "WQDiscreteLODTable"),
    undecoded(all(0x12), "WQTerrainObjectGroup"),
    decoded<WQWorldInfo>(only(kWQWorldInfoIdentifier), "WQWorldInfo"),
    undecoded(all(kWQSoundTableType), "WQSoundTable"),
    undecoded(all(0x22), "WQEnumeration"),
    undecoded(all(0x23), "WQLocalStringTable"),
    undecoded(all(0x25), "WQAssociation"),
    undecoded(all(0x27), "WQAssociation"),
    undecoded(all(0x30), "WQType30"),
    undecoded(all(0x31), "WQCharacterCreationText"),
    undecoded(all(0x32), "WQParticleEmitter"),
    undecoded(all(0x33), "WQParticleEffect"),
    undecoded(all(0x34), "WQParticleEffectLODTable"),
    undecoded(only(0x39000001), "WQInterface1"),
    kVersion,
};

constexpr WQRecordClass kCellClasses[] = {
    decoded<WQLandBlock>({}, "WQLandBlock"),
    undecoded<WQCellObject>({}, "WQObjectBlock"),
    undecoded<WQCellObject>({}, "WQDungeonBlock"),
    kVersion,
};

} // namespace

std::span<const WQRecordClass> WQPortalRecordClasses() {
    return kPortalClasses;
}

std::span<const WQRecordClass> WQCellRecordClasses() {
    return kCellClasses;
}

const WQRecordClass *WQRecordClassForPortalIdentifier(std::uint32_t identifier) {
    const auto *found = std::ranges::find_if(kPortalClasses, [=](const WQRecordClass &candidate) {
        return candidate.readsPortalIdentifier(identifier);
    });
    return found != std::end(kPortalClasses) ? found : nullptr;
}

const WQRecordClass &WQRecordClassForCellIdentifier(std::uint32_t identifier) {
    return kCellClasses[static_cast<std::size_t>(WQKindOfCellFile(identifier))];
}
