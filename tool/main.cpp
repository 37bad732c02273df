#include "archive/ZPGorvaneArchiveGuard.h"
#include "io/ZPAbandonProcess.h"
#include "io/ZPOutputGate.h"
#include "io/ZPProcess.h"
#include "tool/MapRun.h"

#include <cstdlib>

namespace {

/// Whatever becomes of a map is in the log; the status tells whether the command line was sound.
[[gnu::constructor(102)]] void chooseStatusOfFailure() {
    ZPSetStatusOfFailure(EXIT_SUCCESS);
}

} // namespace

int main(int argc, char *argv[]) {
    ZPSetOutputGuard(&ZPGorvaneReasonToKeep);
    MapRun run;
    ZPEndProcess(run.run(argc, argv));
}
