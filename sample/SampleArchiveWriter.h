#pragma once

#include "io/ZPAtomicFile.h"
#include "io/ZPError.h"
#include "sample/SampleDirectory.h"
#include "sample/SampleRandom.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

/// Writes an archive such as years of patching leave it: most files in the order in which they
/// came, stretches out of order, later versions of files in blocks that earlier ones left all over
/// the file, and what is left over chained as free.
///
///     0        256                      the header's end, rounded up to blocks
///     +--------+------------------------+-------+-------+----- ... -----+
///     | banner | format check, magic .. | block | block |               |
///     +--------+------------------------+-------+-------+----- ... -----+
///                                        block: u32 link, then payload
///
/// Memory stays bounded by the directory and the files that wait for old blocks, a fortieth of all.
class SampleArchiveWriter {
  public:
    struct Format {
        std::uint32_t blockSize;
        std::uint32_t contentType;
        std::uint32_t contentSubtype;
    };

    /// The file is open, stays the caller's and gets its name from it.
    SampleArchiveWriter(ZPAtomicFile &file, Format format, std::uint64_t seed);

    // Each operation is false, with an error of the POSIX domain, when the file cannot be written.
    /// Adds a file under an identifier that none before it had; `entry` needs no offset and size.
    bool addFile(SampleFileEntry entry, std::span<const std::byte> bytes, ZPError *error = nullptr);
    /// Writes the directory, the free chain and the header.
    bool finish(ZPError *error = nullptr);

  private:
    struct WaitingFile {
        std::size_t entry;
        std::vector<std::byte> bytes;
    };

    std::uint32_t payloadSize() const { return _format.blockSize - 4; }
    void planWindow();
    std::uint32_t takeFreshBlock();
    std::uint32_t takeOldBlock();
    std::vector<std::uint32_t> takeBlocks(std::size_t length, double oldShare);
    bool writeChain(const std::vector<std::uint32_t> &blocks, std::span<const std::byte> bytes,
                    ZPError *error);
    bool writeBytes(std::uint32_t offset, std::span<const std::byte> bytes, ZPError *error);
    bool flushWindows(std::size_t keep, ZPError *error);
    bool writeWaitingFiles(ZPError *error);
    bool writeDirectory(std::uint32_t &rootOffset, ZPError *error);
    bool writeFreeChain(std::vector<std::uint32_t> blocks, ZPError *error);
    bool writeHeader(std::uint32_t rootOffset, std::span<const std::uint32_t> freeBlocks,
                     ZPError *error);

    ZPAtomicFile &_file;
    Format _format;
    SampleRandom _random;
    std::vector<SampleFileEntry> _entries;
    std::vector<WaitingFile> _waiting;

    // The file grows by windows of a fixed size. Those not yet written stay in memory.
    std::deque<std::vector<std::byte>> _windows;
    std::uint64_t _written = 0;            // where the first window in memory begins
    std::vector<std::uint32_t> _planned;   // blocks of the last window in the order of their use
    std::size_t _next = 0;                 // first unused one of `_planned`
    std::vector<std::uint32_t> _oldBlocks; // left unused on the way, in no order
};

/// Whether a file that begins with these bytes is an archive that SampleArchiveWriter made.
[[nodiscard]] bool SampleBeginsArchive(std::span<const std::byte> start);
