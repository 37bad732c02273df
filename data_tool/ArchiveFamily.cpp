#include "data_tool/ArchiveFamily.h"

#include "data_tool/Failure.h"
#include "io/ZPSystemLog.h"

#include <optional>

namespace {

constexpr std::uint32_t kMagic = 0x5442, kFormatCheck = 0x004C5000;
constexpr std::size_t kFormatCheckOffset = 256, kMagicOffset = 300, kThirdMagicOffset = 320;

std::optional<std::uint32_t> wordAt(std::span<const std::byte> file, std::uint64_t offset) {
    if (offset > file.size() || file.size() - offset < 4)
        return std::nullopt;
    ZPDataCursor cursor(file.subspan(offset, 4));
    return cursor.readLittleInt32();
}

std::string wordText(std::span<const std::byte> file, std::size_t offset) {
    const auto word = wordAt(file, offset);
    return word ? ZPFormat("%08x at %zu", *word, offset)
                : ZPFormat("nothing at %zu (the file has %zu bytes)", offset, file.size());
}

/// Versions 1 and 2 have the same magic number, and version 2 one word more before the root's
/// offset: does the root that this version finds look like a directory?
std::string reasonAgainstRoot(std::span<const std::byte> file, const GameRow &game) {
    const std::uint32_t blockSize = wordAt(file, kMagicOffset + 4).value_or(0);
    const std::uint32_t root = wordAt(file, game.headerVersion == 1 ? 328 : 332).value_or(0);
    if (blockSize < 8 || root < blockSize || root % blockSize != 0 || root >= file.size())
        return ZPFormat("the root offset %08x of its header is no block of %u bytes", root,
                        blockSize);
    // The count of files lies in the first block, or in the second where blocks are small.
    constexpr std::size_t kCountOffset = 248, kMostFiles = 62;
    std::uint64_t countPlace = std::uint64_t{root} + 4 + kCountOffset;
    if (kCountOffset + 4 > blockSize - 4) {
        const std::uint64_t next = wordAt(file, root).value_or(0);
        countPlace = next + 4 + (kCountOffset - (blockSize - 4));
    }
    if (const auto count = wordAt(file, countPlace); !count || *count > kMostFiles)
        return ZPFormat("the block %08x at its root offset is no directory", root);
    return {};
}

} // namespace

std::string reasonNotOfFamily(std::span<const std::byte> file, const GameRow &game) {
    if (game.headerVersion == 3) {
        if (wordAt(file, kFormatCheckOffset) == kFormatCheck &&
            wordAt(file, kThirdMagicOffset) == kMagic)
            return {};
        return ZPFormat("%s wants %08x at %zu and %08x at %zu", game.key, kFormatCheck,
                        kFormatCheckOffset, kMagic, kThirdMagicOffset);
    }
    if (wordAt(file, kMagicOffset) != kMagic)
        return ZPFormat("%s wants %08x at %zu", game.key, kMagic, kMagicOffset);
    const std::string reason = reasonAgainstRoot(file, game);
    return reason.empty() ? reason : std::string(game.key) + ": " + reason;
}

const GameRow &familyOfArchive(const std::filesystem::path &path) {
    ZPError error;
    const auto handle = ZPFileHandle::fileHandleAtPath(path, &error);
    if (handle == nullptr)
        throw CommandFailure(path.string() + ": " + error.failureReason());
    std::string reasons;
    for (const GameRow &game : gameTable()) {
        const std::string reason = reasonNotOfFamily(handle->bytes(), game);
        if (reason.empty())
            return game;
        reasons += (reasons.empty() ? "" : "; ") + reason;
    }
    const auto found = [&](std::size_t offset) { return wordText(handle->bytes(), offset); };
    throw CommandFailure(path.string() + ": is an archive of no known family: found " +
                         found(kFormatCheckOffset) + ", " + found(kThirdMagicOffset) + ", " +
                         found(kMagicOffset) + "; " + reasons);
}
