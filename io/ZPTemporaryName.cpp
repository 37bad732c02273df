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
    for (const Slot &slot : namesToRemove)
        if (const char *path = slot.load())
            unlink(path);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

void catchSignalsOnce() {
    static const bool isInstalled = [] {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU, SIGABRT, SIGTRAP}) {
            struct sigaction current {};
            sigaction(signal, nullptr, &current);
            // A signal that the caller chose to ignore stays ignored.
            if (current.sa_handler == SIG_DFL)
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
