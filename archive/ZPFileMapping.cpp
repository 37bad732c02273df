#include "archive/ZPFileMapping.h"

#include "archive/ZPFastWay.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

/// All mappings of the process. What the handler calls is safe in a signal handler: it takes no
/// lock and allocates nothing.
class ZPFileMapping::Registry {
  public:
    static Slot *takeSlot();

  private:
    static void installHandler();
    static void handleBusError(int signal, siginfo_t *info, void *context);
    static void passOn(int signal, siginfo_t *info, void *context);

    static inline std::atomic<Slot *> slots = nullptr;
    static inline struct sigaction previous {};
};

namespace {

/// Zeros stand where nothing can be read.
void *copyOfFile(int descriptor, std::size_t size) {
    void *copy = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ssize_t count = copy != MAP_FAILED ? 1 : 0;
    for (std::size_t done = 0; count > 0 && done < size; done += static_cast<std::size_t>(count))
        count = pread(descriptor, static_cast<std::byte *>(copy) + done, size - done,
                      static_cast<off_t>(done));
    return copy;
}

std::size_t pageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

// -- the signal

/// Null when there is not enough memory.
ZPFileMapping::Slot *ZPFileMapping::Registry::takeSlot() {
    static std::once_flag isInstalled;
    std::call_once(isInstalled, installHandler);
    for (Slot *slot = slots.load(std::memory_order_acquire); slot != nullptr; slot = slot->next)
        if (!slot->isTaken.exchange(true, std::memory_order_acquire))
            return slot;
    auto *slot = new (std::nothrow) Slot;
    if (slot == nullptr)
        return nullptr;
    slot->isTaken = true;
    slot->next = slots.load(std::memory_order_relaxed);
    while (!slots.compare_exchange_weak(slot->next, slot, std::memory_order_release,
                                        std::memory_order_relaxed)) {
    }
    return slot;
}

void ZPFileMapping::Registry::installHandler() {
    struct sigaction action {};
    action.sa_sigaction = &handleBusError;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGBUS, &action, &previous);
}

void ZPFileMapping::Registry::handleBusError(int signal, siginfo_t *info, void *context) {
    const int number = errno;
    bool isRepaired = false;
    // A positive code comes from the kernel: an access, not somebody's kill.
    if (info->si_code > 0)
        for (Slot *slot = slots.load(std::memory_order_acquire); slot != nullptr && !isRepaired;
             slot = slot->next)
            isRepaired = slot->repair(info->si_addr);
    if (!isRepaired)
        passOn(signal, info, context);
    errno = number;
}

void ZPFileMapping::Registry::passOn(int signal, siginfo_t *info, void *context) {
    if ((previous.sa_flags & SA_SIGINFO) != 0) {
        previous.sa_sigaction(signal, info, context);
    } else if (previous.sa_handler != SIG_DFL && previous.sa_handler != SIG_IGN) {
        previous.sa_handler(signal);
    } else {
        // The access is tried again when the handler returns, and then ends the program.
        std::signal(signal, SIG_DFL);
        if (info->si_code <= 0)
            raise(signal);
    }
}

// -- a mapping

/// Puts zeros where the file has nothing to read; false when the address is not of this mapping.
bool ZPFileMapping::Slot::repair(const void *faultAddress) {
    std::byte *begin = address.load(std::memory_order_acquire);
    const std::size_t size = mappedSize.load(std::memory_order_relaxed);
    const auto offset = static_cast<std::size_t>(static_cast<const std::byte *>(faultAddress) -
                                                 static_cast<const std::byte *>(begin));
    // The slot may be taken for another mapping in between; not, though, one that has just faulted.
    if (begin == nullptr || offset >= size || address.load(std::memory_order_acquire) != begin)
        return false;

    const std::size_t page = pageSize();
    const std::size_t current = currentSize();
    std::size_t first = offset / page * page, count = page;
    if (first >= current) {
        // The file has become shorter: all that it lost, at once.
        first = (current + page - 1) / page * page;
        count = size - first;
    }
    if (mmap(begin + first, count, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) ==
        MAP_FAILED)
        return false;
    if (first >= current)
        lowerSoundSize(current);
    else
        unreadableSize.fetch_add(count, std::memory_order_relaxed);
    return true;
}

std::size_t ZPFileMapping::Slot::currentSize() const {
    struct stat status {};
    // Where the system does not tell, nothing is taken to be lost.
    return fstat(descriptor.load(std::memory_order_relaxed), &status) == 0
               ? static_cast<std::size_t>(status.st_size)
               : mappedSize.load(std::memory_order_relaxed);
}

void ZPFileMapping::Slot::lowerSoundSize(std::size_t size) {
    std::size_t known = soundSize.load(std::memory_order_relaxed);
    while (size < known && !soundSize.compare_exchange_weak(known, size)) {
    }
}

std::unique_ptr<ZPFileMapping> ZPFileMapping::mapDescriptor(int descriptor, std::size_t size) {
    const bool isMapped = ZPIsOpen(ZPFastWay::map);
    void *address = isMapped ? mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0)
                             : copyOfFile(descriptor, size);
    if (address == MAP_FAILED)
        return nullptr;
    Slot *slot = Registry::takeSlot();
    auto *begin = static_cast<std::byte *>(address);
    std::unique_ptr<ZPFileMapping> mapping(
        slot != nullptr ? new (std::nothrow) ZPFileMapping(*slot, begin, size) : nullptr);
    if (mapping == nullptr) {
        if (slot != nullptr)
            slot->isTaken = false;
        munmap(address, size);
        errno = ENOMEM;
        return nullptr;
    }
    slot->mappedSize = size;
    slot->soundSize = size;
    slot->unreadableSize = 0;
    slot->descriptor = descriptor;
    slot->address.store(begin, std::memory_order_release);
    return mapping;
}

ZPFileMapping::~ZPFileMapping() {
    _slot->address = nullptr;
    munmap(const_cast<std::byte *>(_address), _mappedSize);
    _slot->isTaken.store(false, std::memory_order_release);
}

void ZPFileMapping::noteCurrentSize() {
    _slot->lowerSoundSize(_slot->currentSize());
}

void ZPFileMapping::releasePages() const {
    if (ZPIsOpen(ZPFastWay::map))
        madvise(const_cast<std::byte *>(_address), _mappedSize, MADV_DONTNEED);
}
