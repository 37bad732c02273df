#include "data_tool/Command.h"
#include "io/ZPProcess.h"

#include <cstdlib>
#include <iostream>

int main(int argc, char *argv[]) {
    ZPPrepareProcess();
    // Memory goes back to the system faster as a whole than piece by piece.
    const int status = runDataTool(argc, argv);
    std::cout.flush();
    std::quick_exit(status);
}
