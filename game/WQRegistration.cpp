// Makes the client data of this layer known to the registry. The build has the linker ask for
// WQRegisterClientDataClasses, so that a program that links the layer has this file whether or not
// it names anything in it.

#include "game/WQClientData.h"
#include "game/WQRetailClientData.h"
#include "io/ZPLogSink.h"

namespace {

template <class ClientData>
void registerClass(const char *name, ZPGorvaneGame game) {
    ZPGorvaneClientData::registerClientDataClass(
        {name,
         [](const std::filesystem::path &basePath) -> std::unique_ptr<ZPGorvaneClientData> {
             return std::make_unique<ClientData>(basePath);
         }},
        game);
}

} // namespace

/// Runs before main.
extern "C" [[gnu::constructor, gnu::used]] void WQRegisterClientDataClasses() {
    const ZPLogHold hold;
    registerClass<WQClientData>("WQClientData", ZPGorvaneGame::first);
    registerClass<WQRetailClientData>("WQRetailClientData", ZPGorvaneGame::firstRetail);
}
