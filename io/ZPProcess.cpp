#include "io/ZPProcess.h"

#include "io/ZPAbandonProcess.h"
#include "io/ZPForeignCall.h"
#include "io/ZPReader.h"
#include "io/ZPTemporaryName.h"
#include "io/ZPUnwinding.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <new>
#include <unistd.h>

namespace {

/// In place of the library's own, which aborts.
[[noreturn]] void abandonAfterException() noexcept {
    // Where no exception is underway, one may not even have found memory for itself.
    if (std::current_exception() == nullptr)
        ZPAbandonProcess("cannot go on: not enough memory, or a fault of its own");
    try {
        throw;
    } catch (const std::bad_alloc &) {
        ZPAbandonProcess("there is not enough memory to go on");
    } catch (const std::exception &exception) {
        ZPAbandonProcess(exception.what());
    } catch (...) {
        ZPAbandonProcess("cannot go on: a fault of its own");
    }
}

extern "C" void abandonAfterFault(int signal) {
    if (const char *consequence = ZPForeignCall::consequenceOfFault())
        ZPAbandonProcess(consequence);
    // What is in memory after a fault of the program's own is not to be trusted with names.
    if (signal != SIGSEGV)
        ZPRemoveTemporaries();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

/// On a stack of its own: a library that fails while it reports its failure uses up the thread's.
void catchFaults() {
    alignas(16) static std::byte memory[std::size_t{64} << 10];
    stack_t stack{};
    stack.ss_sp = memory;
    stack.ss_size = sizeof memory;
    sigaltstack(&stack, nullptr);
    struct sigaction own {};
    own.sa_handler = &abandonAfterFault;
    own.sa_flags = SA_ONSTACK;
    for (const int signal : {SIGSEGV, SIGABRT, SIGTRAP}) {
        struct sigaction current {};
        // Another handler is a sanitizer's, which has more to say.
        if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_DFL)
            sigaction(signal, &own, nullptr);
    }
}

} // namespace

void ZPPrepareProcess() {
    std::set_terminate(&abandonAfterException);
    ZPPrepareUnwinding();
    catchFaults();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // Opened the wrong way round, so that whoever reads or writes hears of it.
    int descriptor = 0;
    do
        descriptor = open("/dev/null", fcntl(STDIN_FILENO, F_GETFD) < 0 ? O_WRONLY : O_RDONLY);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0)
        close(descriptor);
}

void ZPEndProcess(int status) {
    const bool isWritten = std::fflush(nullptr) == 0 && std::ferror(stdout) == 0;
    // Whoever reads it may go away without a word.
    if (!isWritten && !ZPIsReaderGone(STDOUT_FILENO)) {
        std::fprintf(stderr, "%s: cannot write to standard output\n",
                     program_invocation_short_name);
        status = status == EXIT_SUCCESS ? ZPStatusOfFailure() : status;
    }
    std::quick_exit(status);
}
