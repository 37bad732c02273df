#include "io/ZPLogSink.h"
#include "io/ZPProcess.h"
#include "web_tool/WebRun.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

/// Standard output is for help and version alone, and how far hashing is for who watches it.
void takeLogLine(std::string_view line) {
    static const bool isWatched = isatty(STDERR_FILENO);
    if (isWatched || !line.starts_with("hashed "))
        ZPWriteLogLine(line);
}

} // namespace

int main(int argc, char *argv[]) {
    ZPPrepareProcess();
    ZPSetLogSink(&takeLogLine);
    const WebCommandLine commandLine = parseWebOptions(argc, argv);
    const int status = commandLine.options ? runWeb(*commandLine.options) : commandLine.status;
    // The system takes memory back faster than it is freed piece by piece.
    std::fflush(stdout);
    std::quick_exit(status);
}
