#include "data_tool/Command.h"
#include "io/ZPProcess.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[]) {
    ZPPrepareProcess();
    const int status = runDataTool(argc, argv);
    // Memory goes back to the system faster as a whole than piece by piece.
    std::fflush(nullptr);
    std::quick_exit(status);
}
