#include "archive/ZPGorvaneArchiveGuard.h"
#include "io/ZPOutputGate.h"
#include "io/ZPProcess.h"
#include "tool/MapRun.h"

int main(int argc, char *argv[]) {
    ZPSetOutputGuard(&ZPGorvaneReasonToKeep);
    MapRun run;
    ZPEndProcess(run.run(argc, argv));
}
