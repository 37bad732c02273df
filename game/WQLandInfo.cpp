#include "game/WQLandInfo.h"

#include "game/WQRecordList.h"
#include "io/ZPExtensions.h"
#include "io/ZPSystemLog.h"

WQLandInfo::WQLandInfo(ZPDataCursor &cursor) : _name(cursor.wq_readLength16StringAndAlign(true)) {
    _color.blue = cursor.readByte() / 255.0;
    _color.green = cursor.readByte() / 255.0;
    _color.red = cursor.readByte() / 255.0;
    _color.alpha = cursor.readByte() / 255.0;
    _automaticTerrainObjectIndexes = WQReadList(cursor, [&] { return cursor.readLittleInt32(); });
}

void WQLandInfo::appendTextDataToString(std::string &text) const {
    const auto byteOf = [](double component) { return static_cast<unsigned>(component * 255); };
    text.append(60, '-').append("\n");
    text += ZPFormat("                      identifier: %u (0x%02x)\n", _identifier, _identifier);
    text += ZPFormat("                            name: %s\n", _name.c_str());
    text += ZPFormat("                           color: %02x %02x %02x %02x\n", byteOf(_color.red),
                     byteOf(_color.green), byteOf(_color.blue), byteOf(_color.alpha));
    text += "automatic terrain object indexes:\n";
    for (std::size_t index = 0; index < _automaticTerrainObjectIndexes.size(); ++index) {
        if (index % 8 == 0)
            ZPAppendSpacesOfLength(text, 34);
        text += ZPFormat("%02x", _automaticTerrainObjectIndexes[index]);
        text += index % 8 < 7 ? ' ' : '\n';
    }
}
