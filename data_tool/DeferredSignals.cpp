#include "data_tool/DeferredSignals.h"

#include <atomic>
#include <csignal>

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> receivedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler writes it");

void receive(int signal) {
    receivedSignal = signal;
}

} // namespace

DeferredSignals::DeferredSignals() {
    receivedSignal = 0;
    for (const int signal : kSignals) {
        struct sigaction current {
        }, own{};
        own.sa_handler = &receive;
        own.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
        if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_DFL)
            sigaction(signal, &own, nullptr);
    }
}

DeferredSignals::~DeferredSignals() {
    for (const int signal : kSignals) {
        struct sigaction current {};
        if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler == &receive)
            std::signal(signal, SIG_DFL);
    }
    if (const int signal = receivedSignal)
        std::raise(signal);
}

int DeferredSignals::received() {
    return receivedSignal.load(std::memory_order_relaxed);
}
