#include "archive/ZPGorvaneFileEntry.h"

#include "io/ZPSystemLog.h"

#include <ctime>

ZPGorvaneFileEntry ZPGorvaneFileEntry::copyWithZone() const {
    ZPGorvaneFileEntry copy = *this;
    copy.fileOffset = 0;
    return copy;
}

std::string ZPGorvaneFileEntry::description(const char *className) const {
    const std::time_t seconds = mtime;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S +0000", &utc);
    return ZPFormat("<%s:%p> (ver: %08x, id: %08x, offset: %08x, size: %08x (%10u), mtime: %s, u3: "
                    "%08x)",
                    className, static_cast<const void *>(this), version, identifier, fileOffset,
                    fileSize, fileSize, date, unknown3);
}
