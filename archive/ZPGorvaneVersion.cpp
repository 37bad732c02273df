#include "archive/ZPGorvaneVersion.h"

#include "io/ZPSystemLog.h"

std::string ZPGorvaneVersion::dumpText() const {
    return ZPFormat("version: %u\n", _version);
}

std::string ZPGorvaneVersion::description() const {
    return ZPFormat("<%s:%p> (%u)", className(), static_cast<const void *>(this), _version);
}
