#include "archive/ZPGorvaneVersion.h"

#include "io/ZPAtomicFile.h"
#include "io/ZPSystemLog.h"

bool ZPGorvaneVersion::saveToPath(const std::filesystem::path &path, ZPError *error) const {
    return ZPWriteTextToPath(ZPFormat("version: %u\n", _version), path, error);
}

std::string ZPGorvaneVersion::description() const {
    return ZPFormat("<%s:%p> (%u)", className(), static_cast<const void *>(this), _version);
}
