#include "io/ZPProcess.h"
#include "web_tool/WebRun.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[]) {
    ZPPrepareProcess();
    const WebCommandLine commandLine = parseWebOptions(argc, argv);
    const int status = commandLine.options ? runWeb(*commandLine.options) : commandLine.status;
    // The system takes memory back faster than it is freed piece by piece.
    std::fflush(stdout);
    std::quick_exit(status);
}
