#include "game/WQTerrainObjectSet.h"

#include "game/WQRecordList.h"
#include "io/ZPSystemLog.h"

WQTerrainObjectSet::WQTerrainObjectSet(ZPDataCursor &cursor)
    : value(cursor.readLittleInt32()),
      identifiers(WQReadList(cursor, [&] { return cursor.readLittleInt32(); })) {}

void WQTerrainObjectSet::appendTextDataToString(std::string &text, std::size_t place) const {
    text += ZPFormat("%3zu (0x%02zx): %08x  ", place, place, value);
    for (std::size_t index = 0; index < identifiers.size(); ++index)
        text += ZPFormat(index == 0 ? "%08x" : " %08x", identifiers[index]);
    text += '\n';
}
