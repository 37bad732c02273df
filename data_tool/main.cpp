#include "data_tool/Command.h"

#include <csignal>
#include <cstdlib>

int main(int argc, char *argv[]) {
    // A reader that goes away is met where output is written.
    std::signal(SIGPIPE, SIG_IGN);
    // Memory goes back to the system faster as a whole than piece by piece.
    std::quick_exit(runDataTool(argc, argv));
}
