#include "game/WQReferenceSet.h"

#include "game/WQRecordList.h"
#include "io/ZPSystemLog.h"

WQReferenceSet::WQReferenceSet(ZPDataCursor &cursor)
    : identifier(cursor.readLittleInt32()), references(WQReadList(cursor, [&] {
          const std::uint32_t referenceIdentifier = cursor.readLittleInt32();
          return Reference{referenceIdentifier, cursor.readLittleVector4()};
      })) {}

void WQReferenceSet::appendTextDataToString(std::string &text, std::size_t place) const {
    text.append(70, '-').append("\n");
    text += ZPFormat("%3zu: %08x, count=%zu\n", place, identifier, references.size());
    for (std::size_t index = 0; index < references.size(); ++index) {
        const auto &[referenceIdentifier, values] = references[index];
        text += ZPFormat("%6zu: %08x %f %f %f %f\n", index, referenceIdentifier,
                         static_cast<double>(values.x), static_cast<double>(values.y),
                         static_cast<double>(values.z), static_cast<double>(values.w));
    }
}
