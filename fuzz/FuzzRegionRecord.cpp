// A region record with either weather model, and its dump.

#include "fuzz/FuzzTarget.h"

#include "game/WQClientData.h"
#include "tests/ArchiveBytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    // The data version from which weather models have a ninth field.
    static WQClientData *const clientData = [] {
        const std::uint32_t version = 1394;
        ArchiveBytes archive;
        archive.addFile(0xFFFF0001, std::as_bytes(std::span(&version, 1)));
        archive.writeToPath(FuzzFolder() / "client_portal.dat");
        return new WQClientData(FuzzFolder());
    }();
    for (WQClientData *owner : {static_cast<WQClientData *>(nullptr), clientData}) {
        const auto info =
            ZPRecordWithData<WQWorldInfo>(std::as_bytes(std::span(bytes, size)), owner);
        if (info)
            FuzzExpect(info->saveToPath(FuzzFolder() / "dump", nullptr));
    }
    return 0;
}
