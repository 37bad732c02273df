#include "archive/ZPReadAhead.h"

#include "archive/ZPFastWay.h"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

/// How many places of a file tell whether it is in the cache.
constexpr std::uint64_t kSampleCount = 64;
/// The system cuts longer requests to what it reads ahead by default.
constexpr std::size_t kRequestSize = std::size_t{128} << 10;
/// How much is asked for ahead of what has arrived: enough to keep any disk busy.
constexpr std::size_t kWindowSize = std::size_t{8} << 20;

/// Files on which the system cannot tell are taken not to be.
bool isInCache(int descriptor, std::size_t size) {
    for (std::uint64_t sample = 0; sample < kSampleCount; ++sample) {
        char byte;
        const iovec place{&byte, 1};
        const std::uint64_t offset = (size - 1) * sample / (kSampleCount - 1);
        if (preadv2(descriptor, &place, 1, static_cast<off_t>(offset), RWF_NOWAIT) != 1)
            return false;
    }
    return true;
}

bool isWorthwhile(int descriptor, std::size_t size) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0)
        return false;
    constexpr std::uint64_t kUnitOfBlocks = 512;
    const auto stored = static_cast<std::uint64_t>(status.st_blocks) * kUnitOfBlocks;
    const auto memory = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
                        static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return stored >= size / 2 && size <= memory / 2;
}

bool waitForByte(int descriptor, std::size_t offset) {
    char byte;
    return pread(descriptor, &byte, 1, static_cast<off_t>(offset)) == 1;
}

} // namespace

void ZPReadAhead(int descriptor, std::size_t size) {
    if (size == 0 || !ZPIsOpen(ZPFastWay::ahead) || isInCache(descriptor, size) ||
        !isWorthwhile(descriptor, size))
        return;
    std::size_t requested = 0;
    for (std::size_t begin = 0; begin < size; begin += kRequestSize) {
        for (; requested < std::min(size, begin + kWindowSize); requested += kRequestSize)
            posix_fadvise(descriptor, static_cast<off_t>(requested), kRequestSize,
                          POSIX_FADV_WILLNEED);
        // Of a request that was partly there, either end may be what is still to come.
        if (!waitForByte(descriptor, begin) ||
            !waitForByte(descriptor, std::min(begin + kRequestSize, size) - 1))
            return;
    }
}
