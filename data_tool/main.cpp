#include "data_tool/Command.h"
#include "io/ZPProcess.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>

int main(int argc, char *argv[]) {
    // A reader that goes away is met where output is written.
    std::signal(SIGPIPE, SIG_IGN);
    const int status = runDataTool(argc, argv);
    // Memory goes back to the system faster as a whole than piece by piece.
    std::fflush(nullptr);
    std::quick_exit(status);
}
