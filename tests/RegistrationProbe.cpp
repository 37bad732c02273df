#include "game/WQClientData.h"

#include "io/ZPSystemLog.h"

int main() {
    ZPLog("main");
    return WQClientData("/nonexistent").portalDataFile() != nullptr ? 0 : 1;
}
