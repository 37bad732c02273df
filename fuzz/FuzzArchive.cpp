// A whole archive: header, chains, directory, index, and the records of all families.

#include "fuzz/FuzzTarget.h"

#include "game/WQArchiveFamilies.h"
#include "game/WQClientData.h"

#include <tuple>

namespace {

/// A directory may list one long file many times over; reading the first of them is enough.
constexpr std::size_t kFilesRead = 256;

void readFiles(const ZPGorvaneDataFile &dataFile) {
    ZPData scratch;
    std::size_t left = kFilesRead;
    for (const ZPGorvaneFileEntry &entry : dataFile.fileEntriesByIdentifier()) {
        if (left-- == 0)
            return;
        ZPError error;
        const auto bytes = dataFile.readBytesForFileEntry(entry, scratch, &error);
        FuzzExpect(bytes ? bytes->size() == entry.fileSize : !error.description().empty());
        FuzzExpect(!bytes ||
                   bytes->size() <= dataFile.blockStorage()->fileHandle()->bytes().size());
        FuzzExpect(!entry.description().empty());
    }
}

void readRecords(WQClientData &clientData, const WQDataFile &dataFile) {
    std::size_t left = kFilesRead;
    for (const ZPGorvaneFileEntry &entry : dataFile.fileEntriesByIdentifier()) {
        if (left-- == 0)
            return;
        if (const auto record = clientData.newObjectForFileEntry(entry, dataFile))
            FuzzExpect(!record->description().empty());
    }
}

void readOfFamily(const ZPGorvaneArchiveFamily &family, const std::filesystem::path &path) {
    ZPGorvaneDataFile dataFile(family, path);
    dataFile.quickLoadDataVersion();
    dataFile.loadFileEntriesIfNecessary();
    readFiles(dataFile);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzWriteFile("client_cell_1.dat", std::as_bytes(std::span(bytes, size)));
    static const bool isLinked = [] {
        std::filesystem::create_symlink("client_cell_1.dat", FuzzFolder() / "client_portal.dat");
        return true;
    }();
    FuzzExpect(isLinked);

    WQClientData clientData(FuzzFolder());
    clientData.loadAllFileEntries();
    WQDataFile &cellDataFile = *clientData.cellDataFile();
    readFiles(cellDataFile);
    readRecords(clientData, cellDataFile);
    readRecords(clientData, *clientData.portalDataFile());
    (void)clientData.worldInfo();
    for (const std::uint8_t type : cellDataFile.usedFileTypes())
        FuzzExpect(!cellDataFile.fileEntriesByType(type).empty());
    cellDataFile.check();
    if (const auto *storage = cellDataFile.blockStorage()) {
        std::ignore = storage->check();
        storage->searchForFirstFreeBlock();
        storage->logHeaderInfo();
    }

    readOfFamily(kWQRetailArchiveFamily, FuzzFolder() / "client_cell_1.dat");
    readOfFamily(kWQ2ArchiveFamily, FuzzFolder() / "client_cell_1.dat");
    return 0;
}
