#pragma once

#include "archive/ZPFileHandle.h"
#include "archive/ZPGorvaneChainMemory.h"
#include "archive/ZPGorvaneLayout.h"
#include "io/ZPDataCursor.h"

#include <algorithm>
#include <array>
#include <optional>

inline constexpr char kZPGorvaneStorageErrorDomain[] = "ZPGorvaneStorageErrorDomain";

enum ZPGorvaneStorageErrorCode : int {
    ZPGorvaneStorageErrorGeneral = 0,
    ZPGorvaneStorageErrorFreeBlock = 1,
    ZPGorvaneStorageErrorOutsideDataArea = 2,
    ZPGorvaneStorageErrorNotOnBlockBoundary = 3,
    ZPGorvaneStorageErrorLoop = 4,
    ZPGorvaneStorageErrorException = 5,
    ZPGorvaneStorageErrorTooShort = 6,
};

// Keys of the user info, each with a number but for the exception's text.
inline constexpr char kZPGorvaneStorageErrorKey_FirstBlockOffset[] =
    "ZPGorvaneStorageErrorKey_FirstBlockOffset";
inline constexpr char kZPGorvaneStorageErrorKey_BlockOffset[] =
    "ZPGorvaneStorageErrorKey_BlockOffset";
inline constexpr char kZPGorvaneStorageErrorKey_FirstValidBlockOffset[] =
    "ZPGorvaneStorageErrorKey_FirstValidBlockOffset";
inline constexpr char kZPGorvaneStorageErrorKey_LastValidBlockOffset[] =
    "ZPGorvaneStorageErrorKey_LastValidBlockOffset";
inline constexpr char kZPGorvaneStorageErrorKey_Exception[] = "ZPGorvaneStorageErrorKey_Exception";

/// A block file, read only: a header, then blocks of equal size, each of which begins with a link
/// to the next block of its chain. A stored file is the payload of one chain.
///
///     block in use:   next block's offset, 0 in the last (u32) | blockSize - 4 payload bytes
///     free block:     0x80000000 | next free block's offset    | not interpreted
///
/// Chains may be read from several threads at once: the file is mapped, so reading moves no
/// position and needs no lock. Only `close` and the setters must not run beside a read. Where the
/// file changes meanwhile, a read fails or gives what stood in its blocks, before or after; what a
/// file has lost since it was opened counts as not there.
class ZPGorvaneBlockStorage {
  public:
    [[nodiscard]] static std::unique_ptr<ZPFileHandle>
    _fileHandleAtPath(const std::filesystem::path &path, ZPError *error = nullptr) {
        return ZPFileHandle::fileHandleAtPath(path, error);
    }

    // Each owns its file. Null when the file cannot be opened (the error says why) or its header is
    // refused (logged, no error value). Which header version an archive has is a matter of its
    // family, not detected.
    [[nodiscard]] static std::unique_ptr<ZPGorvaneBlockStorage>
    initV1StorageWithFileAtPath(const std::filesystem::path &path, ZPError *error = nullptr);
    [[nodiscard]] static std::unique_ptr<ZPGorvaneBlockStorage>
    initV2StorageWithFileAtPath(const std::filesystem::path &path, ZPError *error = nullptr);
    [[nodiscard]] static std::unique_ptr<ZPGorvaneBlockStorage>
    initV3StorageWithFileAtPath(const std::filesystem::path &path, ZPError *error = nullptr);
    [[nodiscard]] static std::unique_ptr<ZPGorvaneBlockStorage>
    initV1StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle);
    [[nodiscard]] static std::unique_ptr<ZPGorvaneBlockStorage>
    initV2StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle);
    [[nodiscard]] static std::unique_ptr<ZPGorvaneBlockStorage>
    initV3StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle);

    /// The first `expectedLength` bytes of the chain that starts at `offset`. The chain must be
    /// sound beyond them too; none, with an error, where it is not or falls short. A copy that does
    /// not fit into memory is an error of the POSIX domain, a small one std::bad_alloc.
    [[nodiscard]] std::optional<ZPData> readDataFromBlocksAtOffset(std::uint32_t offset,
                                                                   std::uint32_t expectedLength,
                                                                   ZPError *error = nullptr) const;

    /// The same without a copy where one block holds all the bytes; else they are gathered in
    /// `scratch`. Valid until the storage is closed or `scratch` changes.
    [[nodiscard]] std::optional<std::span<const std::byte>>
    readBytesFromBlocksAtOffset(std::uint32_t offset, std::uint32_t expectedLength, ZPData &scratch,
                                ZPError *error = nullptr) const;

    /// The same without a word in the log, for who collects what is wrong: the error, or none and
    /// the bytes in `found`.
    [[nodiscard]] std::optional<ZPError> findBytesAtOffset(std::uint32_t offset,
                                                           std::uint32_t expectedLength,
                                                           ZPData &scratch,
                                                           std::span<const std::byte> &found) const;
    /// What the log says of an error that an exception caused; empty for any other.
    [[nodiscard]] static std::string exceptionLine(const ZPError &error,
                                                   const std::string &archive = {});

    /// Starts loading the first blocks of a chain of `length` bytes into the processor's cache. An
    /// archive grown over years has its files all over the place, and who reads many of them waits
    /// for memory most of the time.
    ///
    /// Always inlined, since the compiler drops calls of a function whose only effect is this.
    [[gnu::always_inline]] inline void prefetchBlocksAtOffset(std::uint32_t offset,
                                                              std::uint32_t length) const {
        constexpr std::uint64_t kCacheLine = 64, kLimit = 512;
        const std::span<const std::byte> bytes = fileBytes();
        const std::uint64_t end =
            std::min({offset + ZPGorvaneLayout::kLinkSize + std::uint64_t{length}, offset + kLimit,
                      std::uint64_t{bytes.size()}});
        for (std::uint64_t position = offset; position < end; position += kCacheLine)
            __builtin_prefetch(&bytes[position]);
    }

    /// `checkHeader` and, only if that passes, `checkFreeBlockChain`.
    [[nodiscard]] bool check() const;
    // What is wrong is logged.
    [[nodiscard]] bool checkHeader() const;
    [[nodiscard]] bool checkFreeBlockChain() const;
    /// Scans every block and logs how many are free, and which of those no free block links to.
    void searchForFirstFreeBlock() const;
    void logHeaderInfo() const;
    void fubar() const { logHeaderInfo(); }
    std::string description() const;

    /// Releases the file and its lock; every later read fails.
    void close() { _fileHandle.reset(); }

    std::uint32_t version() const { return _version; }
    std::uint32_t blockSize() const { return _blockSize; }
    /// How much of a block is left beside its link.
    std::uint32_t payloadSize() const { return _blockSize - ZPGorvaneLayout::kLinkSize; }
    std::uint32_t contentType() const { return _contentType; }
    std::uint32_t contentSubtype() const { return _contentSubtype; }
    /// How many blocks the file really has, its header included.
    std::size_t blockCount() const { return fileBytes().size() / _blockSize; }
    /// How many of them an offset can name: what is remembered block by block needs no more room,
    /// however long the file is.
    std::size_t reachableBlockCount() const {
        return std::min<std::size_t>(blockCount(), ZPGorvaneLayout::kFreeBit / _blockSize + 1);
    }
    /// Payload bytes of the free blocks, in 32 bits.
    std::uint32_t freeSpace() const { return payloadSize() * _freeBlockCount; }

    std::uint32_t fileSize() const { return _fileSize; }
    void setFileSize(std::uint32_t size) {
        _fileSize = size;
        _chainMemory.forget();
    }
    std::uint32_t firstFreeBlock() const { return _firstFreeBlock; }
    void setFirstFreeBlock(std::uint32_t offset) { _firstFreeBlock = offset; }
    std::uint32_t lastFreeBlock() const { return _lastFreeBlock; }
    void setLastFreeBlock(std::uint32_t offset) { _lastFreeBlock = offset; }
    std::uint32_t freeBlockCount() const { return _freeBlockCount; }
    void setFreeBlockCount(std::uint32_t count) { _freeBlockCount = count; }
    std::uint32_t rootOffset() const { return _rootOffset; }
    void setRootOffset(std::uint32_t offset) { _rootOffset = offset; }
    /// Null once the file is closed.
    const ZPFileHandle *fileHandle() const { return _fileHandle.get(); }
    void setFileHandle(std::unique_ptr<ZPFileHandle> fileHandle) {
        _fileHandle = std::move(fileHandle);
        _chainMemory.forget();
    }

  private:
    class Chain;

    explicit ZPGorvaneBlockStorage(std::unique_ptr<ZPFileHandle> fileHandle)
        : _fileHandle(std::move(fileHandle)) {}
    [[nodiscard]] static std::unique_ptr<ZPGorvaneBlockStorage>
    initWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle, std::uint32_t version);
    [[nodiscard]] bool readHeader(std::uint32_t version);

    std::span<const std::byte> fileBytes() const {
        return _fileHandle != nullptr ? _fileHandle->bytes() : std::span<const std::byte>();
    }
    /// Throws ZPRangeException where the bytes end before.
    static std::uint32_t linkAtOffset(std::span<const std::byte> bytes, std::uint64_t offset);

    std::unique_ptr<ZPFileHandle> _fileHandle;
    std::uint32_t _version = 0;
    std::uint32_t _blockSize = 0;
    std::uint32_t _fileSize = 0;
    std::uint32_t _contentType = 0;
    std::uint32_t _contentSubtype = 0;
    std::uint32_t _firstFreeBlock = 0;
    std::uint32_t _lastFreeBlock = 0;
    std::uint32_t _freeBlockCount = 0;
    std::uint32_t _rootOffset = 0;
    std::array<std::uint32_t, 7> _unknown2To8{};
    mutable ZPGorvaneChainMemory _chainMemory;
};
