#include "sample/SampleArchiveWriter.h"

#include "io/ZPMutableDataCursor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {

/// The file's size has to be a multiple of this.
constexpr std::uint32_t kWindowSize = 1 << 20;
/// A free block's link has but 31 bits for the next one.
constexpr std::uint64_t kLargestFile = 1u << 31;

constexpr std::uint32_t kFormatOffset = 256;
constexpr std::uint32_t kHeaderEnd = 356;
constexpr std::uint32_t kFreeMark = 0x80000000;

constexpr double kWaitingShare = 0.025;
constexpr double kSkippedShare = 0.045;
constexpr char kBanner[] = "Sample world of Plotterra";

void shuffle(std::span<std::uint32_t> values, SampleRandom &random) {
    for (std::size_t i = values.size(); i > 1; --i)
        std::swap(values[i - 1], values[random.below(static_cast<std::uint32_t>(i))]);
}

} // namespace

SampleArchiveWriter::SampleArchiveWriter(ZPAtomicFile &file, Format format, std::uint64_t seed)
    : _file(file), _format(format), _random(seed) {}

/// Appends a window and decides the order in which its blocks are used.
void SampleArchiveWriter::planWindow() {
    const std::uint64_t start = _written + _windows.size() * std::uint64_t{kWindowSize};
    _windows.emplace_back(kWindowSize);
    _planned.clear();
    _next = 0;
    const std::uint32_t count = kWindowSize / _format.blockSize;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint64_t offset = start + std::uint64_t{i} * _format.blockSize;
        if (offset >= kHeaderEnd)
            _planned.push_back(static_cast<std::uint32_t>(offset));
    }
    constexpr std::size_t kStretch = 32;
    for (std::size_t i = 0; i + kStretch <= _planned.size(); i += kStretch) {
        const std::span<std::uint32_t> here(&_planned[i], kStretch);
        if (_random.chance(0.25)) {
            const std::size_t stretches = _planned.size() / kStretch;
            const std::size_t other =
                _random.below(static_cast<std::uint32_t>(stretches)) * kStretch;
            if (other != i)
                std::swap_ranges(here.begin(), here.end(),
                                 _planned.begin() + static_cast<std::ptrdiff_t>(other));
        }
        if (_random.chance(0.2))
            shuffle(here, _random);
    }
    std::erase_if(_planned, [&](std::uint32_t offset) {
        const bool skip = _random.chance(kSkippedShare);
        if (skip)
            _oldBlocks.push_back(offset);
        return skip;
    });
}

std::uint32_t SampleArchiveWriter::takeFreshBlock() {
    while (_next == _planned.size())
        planWindow();
    return _planned[_next++];
}

std::uint32_t SampleArchiveWriter::takeOldBlock() {
    const std::size_t i = _random.below(static_cast<std::uint32_t>(_oldBlocks.size()));
    std::swap(_oldBlocks[i], _oldBlocks.back());
    const std::uint32_t offset = _oldBlocks.back();
    _oldBlocks.pop_back();
    return offset;
}

std::vector<std::uint32_t> SampleArchiveWriter::takeBlocks(std::size_t length, double oldShare) {
    std::vector<std::uint32_t> blocks((length + payloadSize() - 1) / payloadSize());
    for (std::uint32_t &block : blocks)
        block = !_oldBlocks.empty() && _random.chance(oldShare) ? takeOldBlock() : takeFreshBlock();
    return blocks;
}

bool SampleArchiveWriter::writeBytes(std::uint32_t offset, std::span<const std::byte> bytes,
                                     ZPError *error) {
    if (offset < _written)
        return _file.rewriteAtOffset(offset, bytes, error);
    const std::uint64_t inMemory = offset - _written;
    std::memcpy(&_windows[inMemory / kWindowSize][inMemory % kWindowSize], bytes.data(),
                bytes.size());
    return true;
}

bool SampleArchiveWriter::writeChain(const std::vector<std::uint32_t> &blocks,
                                     std::span<const std::byte> bytes, ZPError *error) {
    if (_written + (_windows.size() + 1) * std::uint64_t{kWindowSize} > kLargestFile)
        return ZPFail(error, ZPError::posix(EFBIG));
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const auto payload =
            bytes.subspan(i * payloadSize())
                .first(std::min<std::size_t>(payloadSize(), bytes.size() - i * payloadSize()));
        ZPMutableDataCursor block;
        block.writeLittleInt32(i + 1 < blocks.size() ? blocks[i + 1] : 0);
        block.writeData(payload);
        if (!writeBytes(blocks[i], block.data(), error))
            return false;
    }
    return flushWindows(1, error);
}

/// Writes all windows but the last `keep`; blocks that are still unused in them have been noted.
bool SampleArchiveWriter::flushWindows(std::size_t keep, ZPError *error) {
    while (_windows.size() > keep) {
        if (!_file.write(_windows.front(), error))
            return false;
        _windows.pop_front();
        _written += kWindowSize;
    }
    return true;
}

bool SampleArchiveWriter::addFile(SampleFileEntry entry, std::span<const std::byte> bytes,
                                  ZPError *error) {
    entry.fileSize = static_cast<std::uint32_t>(bytes.size());
    if (_random.chance(kWaitingShare)) {
        _waiting.push_back({_entries.size(), {bytes.begin(), bytes.end()}});
        _entries.push_back(entry);
        return true;
    }
    const std::vector<std::uint32_t> blocks = takeBlocks(bytes.size(), 0);
    entry.fileOffset = blocks.empty() ? 0 : blocks.front();
    _entries.push_back(entry);
    return writeChain(blocks, bytes, error);
}

bool SampleArchiveWriter::writeWaitingFiles(ZPError *error) {
    for (const WaitingFile &file : _waiting) {
        const std::vector<std::uint32_t> blocks = takeBlocks(file.bytes.size(), 0.9);
        _entries[file.entry].fileOffset = blocks.empty() ? 0 : blocks.front();
        if (!writeChain(blocks, file.bytes, error))
            return false;
    }
    return true;
}

bool SampleArchiveWriter::writeDirectory(std::uint32_t &rootOffset, ZPError *error) {
    std::sort(_entries.begin(), _entries.end(),
              [](const auto &a, const auto &b) { return a.identifier < b.identifier; });
    bool written = true;
    SampleDirectoryBuilder builder(_entries, _random, [&](std::span<const std::byte> node) {
        const std::vector<std::uint32_t> blocks = takeBlocks(node.size(), 0.12);
        written = written && writeChain(blocks, node, error);
        return blocks.front();
    });
    rootOffset = builder.build();
    return written;
}

/// `blocks` are in the order of the chain.
bool SampleArchiveWriter::writeFreeChain(std::vector<std::uint32_t> blocks, ZPError *error) {
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        ZPMutableDataCursor link;
        link.writeLittleInt32(kFreeMark | (i + 1 < blocks.size() ? blocks[i + 1] : 0));
        if (!writeBytes(blocks[i], link.data(), error))
            return false;
    }
    return true;
}

bool SampleArchiveWriter::writeHeader(std::uint32_t rootOffset,
                                      std::span<const std::uint32_t> freeBlocks, ZPError *error) {
    const std::uint64_t fileSize = _written + _windows.size() * std::uint64_t{kWindowSize};
    ZPMutableDataCursor header;
    header.writeBytes(kBanner, sizeof kBanner);
    const std::vector<std::byte> gap(kFormatOffset - sizeof kBanner);
    header.writeData(gap);
    header.writeLittleInt32(0x004C5000);
    header.writeData(std::span(gap).first(60));
    header.writeLittleInt32(0x5442);
    header.writeLittleInt32(_format.blockSize);
    header.writeLittleInt32(static_cast<std::uint32_t>(fileSize));
    header.writeLittleInt32(_format.contentType);
    header.writeLittleInt32(_format.contentSubtype);
    header.writeLittleInt32(freeBlocks.empty() ? 0 : freeBlocks.front());
    header.writeLittleInt32(freeBlocks.empty() ? 0 : freeBlocks.back());
    header.writeLittleInt32(static_cast<std::uint32_t>(freeBlocks.size()));
    header.writeLittleInt32(rootOffset);
    return writeBytes(0, header.data(), error);
}

bool SampleArchiveWriter::finish(ZPError *error) {
    std::uint32_t rootOffset = 0;
    if (!writeWaitingFiles(error) || !writeDirectory(rootOffset, error))
        return false;
    std::vector<std::uint32_t> freeBlocks = std::move(_oldBlocks);
    freeBlocks.insert(freeBlocks.end(), _planned.begin() + static_cast<std::ptrdiff_t>(_next),
                      _planned.end());
    shuffle(freeBlocks, _random);
    return writeFreeChain(freeBlocks, error) && writeHeader(rootOffset, freeBlocks, error) &&
           flushWindows(0, error);
}

bool SampleBeginsArchive(std::span<const std::byte> start) {
    const auto banner = std::as_bytes(std::span(kBanner));
    return start.size() >= banner.size() && std::ranges::equal(start.first(banner.size()), banner);
}
