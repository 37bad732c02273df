// The checker, on an archive of any family: it ends, says where each finding is, and where it has
// nothing to say of a file, the file can be read.

#include "fuzz/FuzzTarget.h"

#include "archive/ZPGorvaneArchiveCheck.h"
#include "game/WQArchiveFamilies.h"

#include <set>

namespace {

void checkOfFamily(const ZPGorvaneArchiveFamily &family, const std::filesystem::path &path) {
    ZPGorvaneDataFile dataFile(family, path);
    if (dataFile.blockStorage() == nullptr)
        return;
    dataFile.loadFileEntriesIfNecessary();
    std::set<std::uint32_t> found;
    for (const ZPGorvaneFinding &finding : ZPGorvaneArchiveCheck(dataFile).run()) {
        FuzzExpect(finding.offset <= dataFile.blockStorage()->fileHandle()->bytes().size());
        FuzzExpect(!finding.cause.empty());
        if (finding.identifier)
            found.insert(*finding.identifier);
    }
    ZPData scratch;
    for (const ZPGorvaneFileEntry &entry : dataFile.fileEntriesByIdentifier())
        if (!found.contains(entry.identifier))
            FuzzExpect(dataFile.readBytesForFileEntry(entry, scratch).has_value());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzWriteFile("archive.dat", std::as_bytes(std::span(bytes, size)));
    for (const ZPGorvaneArchiveFamily *family : WQArchiveFamilies())
        checkOfFamily(*family, FuzzFolder() / "archive.dat");
    return 0;
}
