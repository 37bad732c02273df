#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <span>

/// A file mapped into memory for reading that may become shorter meanwhile, or lie on a disk that
/// fails: what can no longer be read is then taken as zeros, where it would otherwise end the
/// program with SIGBUS.
///
/// The first mapping installs a handler of that signal for the whole process; a signal that no
/// mapping explains goes on to the handler that was there before.
class ZPFileMapping {
  public:
    /// Null when there is not enough memory, with the cause in `errno`. The descriptor is not owned
    /// and must stay open for as long as the mapping lives; `size` is in bytes.
    [[nodiscard]] static std::unique_ptr<ZPFileMapping> mapDescriptor(int descriptor,
                                                                      std::size_t size);
    ~ZPFileMapping();
    ZPFileMapping(const ZPFileMapping &) = delete;
    ZPFileMapping &operator=(const ZPFileMapping &) = delete;

    /// The file as it was mapped, less what it was found to have lost since; what was given out
    /// before stays mapped while this lives. Costs no more than reading two members.
    std::span<const std::byte> bytes() const {
        return {_address, _slot->soundSize.load(std::memory_order_relaxed)};
    }
    std::size_t mappedSize() const { return _mappedSize; }

    /// Asks the system how long the file is now; `bytes` is shortened accordingly.
    void noteCurrentSize();
    /// How many bytes within the file were taken as zeros since they could not be read.
    std::size_t unreadableSize() const {
        return _slot->unreadableSize.load(std::memory_order_relaxed);
    }

    /// Gives back the memory that reading took; what is read later is mapped again.
    void releasePages() const;

  private:
    /// What the signal handler knows of a mapping. Slots are never freed, only used again, so that
    /// the handler can walk their list at any time.
    struct Slot {
        std::atomic<std::byte *> address = nullptr; ///< null in a slot that is not used
        std::atomic<std::size_t> mappedSize = 0, soundSize = 0, unreadableSize = 0;
        std::atomic<int> descriptor = -1;
        std::atomic<bool> isTaken = false;
        Slot *next = nullptr;

        bool repair(const void *address);
        /// How many bytes the file has now.
        std::size_t currentSize() const;
        void lowerSoundSize(std::size_t size);
    };
    class Registry;

    ZPFileMapping(Slot &slot, const std::byte *address, std::size_t size)
        : _slot(&slot), _address(address), _mappedSize(size) {}

    Slot *_slot;
    const std::byte *_address;
    std::size_t _mappedSize;
};
