#include "io/ZPProcess.h"
#include "tool/MapRun.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[]) {
    ZPPrepareProcess();
    MapRun run;
    const int status = run.run(argc, argv);
    // Everything is written. The system takes memory back faster than it is freed piece by piece.
    std::fflush(stdout);
    std::quick_exit(status);
}
