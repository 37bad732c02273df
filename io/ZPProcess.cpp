#include "io/ZPProcess.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

void ZPPrepareProcess() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    int descriptor = 0;
    do
        descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0)
        close(descriptor);
}
