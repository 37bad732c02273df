// compare-records <older directory> <newer directory>: lists what became of the portal archive's
// records between two clients.

#include "game/WQClientData.h"
#include "game/WQDataFileComparison.h"

#include <cstdio>

namespace {

void list(const char *what, const std::vector<std::uint32_t> &identifiers) {
    for (const std::uint32_t identifier : identifiers) {
        const WQRecordClass *recordClass = WQRecordClassForPortalIdentifier(identifier);
        std::printf("%s %08x %s\n", what, identifier,
                    recordClass != nullptr ? recordClass->name : "(unknown)");
    }
}

} // namespace

int main(int argc, char *argv[]) {
    if (argc != 3)
        return 2;
    const WQClientData older{std::filesystem::path(argv[1])}, newer{std::filesystem::path(argv[2])};
    WQDataFileComparison comparison(older.portalDataFile(), newer.portalDataFile());
    comparison.buildComparison();
    list("added", comparison.fileKeysAdded().value());
    list("removed", comparison.fileKeysRemoved().value());
    list("changed", comparison.fileKeysChanged().value());
    return 0;
}
