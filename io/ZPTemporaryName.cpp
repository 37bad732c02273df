#include "io/ZPTemporaryName.h"

#include "io/ZPExtensions.h"

#include <array>
#include <csignal>
#include <random>
#include <unistd.h>
#include <utility>

namespace {

// A signal handler may only touch lock-free atomics, so the names that it removes are plain
// pointers to text that outlives them here.
using Slot = std::atomic<const char *>;
std::array<Slot, 64> namesToRemove;
static_assert(Slot::is_always_lock_free);

extern "C" void removeTemporaryFilesAndDie(int signal) {
    ZPRemoveTemporaries();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

/// Whether a signal ends a process unless it is caught, and can be caught. Not so faults of the
/// program itself: after one its memory is not to be trusted.
bool endsProcess(int signal) {
    switch (signal) {
    case SIGKILL:
    case SIGSTOP: return false; // cannot be caught
    case SIGCHLD:
    case SIGCONT:
    case SIGTSTP:
    case SIGTTIN:
    case SIGTTOU:
    case SIGURG:
    case SIGWINCH: return false;
    case SIGSEGV:
    case SIGBUS:
    case SIGILL:
    case SIGFPE: return false; // faults
    default: return true;
    }
}

void catchSignalsOnce() {
    static const bool isInstalled = [] {
        for (int signal = 1; signal <= SIGRTMAX; ++signal) {
            struct sigaction current {};
            // A signal that the caller chose to ignore stays ignored; some the system keeps.
            if (endsProcess(signal) && sigaction(signal, nullptr, &current) == 0 &&
                current.sa_handler == SIG_DFL)
                std::signal(signal, removeTemporaryFilesAndDie);
        }
        return true;
    }();
    (void)isInstalled;
}

std::string freshName() {
    std::random_device random;
    std::array<unsigned, 2> bits;
    for (unsigned &word : bits)
        word = random();
    return std::string(".").append(ZPHexString(std::as_bytes(std::span(bits)))).append(".tmp");
}

} // namespace

ZPTemporaryName::ZPTemporaryName(const std::filesystem::path &path)
    : _path(path.parent_path() / freshName()) {
    catchSignalsOnce();
    for (Slot &slot : namesToRemove)
        if (const char *none = nullptr; slot.compare_exchange_strong(none, _path.c_str())) {
            _slot = &slot;
            return;
        }
}

ZPTemporaryName::~ZPTemporaryName() {
    if (!_path.empty())
        unlink(_path.c_str());
    release();
}

void ZPTemporaryName::release() {
    if (_slot != nullptr)
        std::exchange(_slot, nullptr)->store(nullptr);
    _path.clear();
}

void ZPRemoveTemporaries() noexcept {
    for (const Slot &slot : namesToRemove)
        if (const char *path = slot.load())
            unlink(path);
}
