#include "archive/ZPGorvaneArchiveGuard.h"
#include "io/ZPLogSink.h"
#include "io/ZPOutputGate.h"
#include "io/ZPProcess.h"
#include "web_tool/WebRun.h"

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
    ZPSetOutputGuard(&ZPGorvaneReasonToKeep);
    ZPSetLogSink(&takeLogLine);
    const WebCommandLine commandLine = parseWebOptions(argc, argv);
    ZPEndProcess(commandLine.options ? runWeb(*commandLine.options) : commandLine.status);
}
