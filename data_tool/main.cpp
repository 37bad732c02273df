#include "archive/ZPGorvaneArchiveGuard.h"
#include "data_tool/Command.h"
#include "io/ZPOutputGate.h"
#include "io/ZPProcess.h"

int main(int argc, char *argv[]) {
    ZPSetOutputGuard(&ZPGorvaneReasonToKeep);
    ZPEndProcess(runDataTool(argc, argv));
}
