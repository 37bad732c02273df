// Knows of the registry alone: which games are there when main begins?

#include "archive/ZPGorvaneClientData.h"
#include "io/ZPSystemLog.h"

#include <cstdio>

int main() {
    std::fputs("begins\n", stderr); // before which nobody may write
    ZPLog("main");
    const auto *first = ZPGorvaneClientData::clientDataClassForGorvaneGame(ZPGorvaneGame::first);
    const auto *retail =
        ZPGorvaneClientData::clientDataClassForGorvaneGame(ZPGorvaneGame::firstRetail);
    return first != nullptr && retail != nullptr &&
                   first->initWithBasePath("/nonexistent") != nullptr
               ? 0
               : 1;
}
