#include "archive/ZPGorvaneArchiveFamily.h"

#include "archive/ZPGorvaneArchiveFolder.h"
#include "io/ZPSystemLog.h"

#include <algorithm>

using namespace ZPGorvaneLayout;

namespace {

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
std::string reasonAgainstRoot(std::span<const std::byte> file, std::uint32_t version) {
    const std::uint32_t blockSize = wordAt(file, magicPlace(version) + 4).value_or(0);
    const std::uint32_t root = wordAt(file, rootPlace(version)).value_or(0);
    if (blockSize < kLeastBlockSize || root < blockSize || root % blockSize != 0 ||
        root >= file.size())
        return ZPFormat("the root offset %08x of its header is no block of %u bytes", root,
                        blockSize);
    // The count of files lies in the first block, or in the second where blocks are small.
    const std::uint64_t payload = blockSize - kLinkSize;
    std::uint64_t countPlace = std::uint64_t{root} + kLinkSize + kFileCountPlace;
    if (kFileCountPlace + 4 > payload)
        countPlace = wordAt(file, root).value_or(0) + kLinkSize + (kFileCountPlace - payload);
    if (const auto count = wordAt(file, countPlace); !count || *count > kEntriesPerNode)
        return ZPFormat("the block %08x at its root offset is no directory", root);
    return {};
}

template <class Matches>
const ZPGorvaneArchiveName *findArchive(std::span<const ZPGorvaneArchiveName> archives,
                                        Matches matches) {
    const auto found = std::ranges::find_if(archives, matches);
    return found != archives.end() ? &*found : nullptr;
}

} // namespace

const ZPGorvaneArchiveName *ZPGorvaneArchiveFamily::archiveInFile(std::string_view fileName) const {
    return findArchive(
        archives, [=](const auto &row) { return ZPGorvaneIsSameFileName(row.fileName, fileName); });
}

const ZPGorvaneArchiveName *ZPGorvaneArchiveFamily::archiveWithName(std::string_view name) const {
    return findArchive(archives, [=](const auto &row) { return row.name == name; });
}

const ZPGorvaneArchiveName *
ZPGorvaneArchiveFamily::archiveWithRole(ZPGorvaneArchiveRole role) const {
    return findArchive(archives, [=](const auto &row) { return row.role == role; });
}

std::string ZPGorvaneArchiveFamily::reasonAgainst(std::span<const std::byte> file) const {
    const std::size_t place = magicPlace(headerVersion);
    const bool hasMagic = wordAt(file, place) == kMagic;
    if (headerVersion == 3) {
        if (hasMagic && wordAt(file, kFormatCheckPlace) == kFormatCheck)
            return {};
        return ZPFormat("%s wants %08x at %zu and %08x at %zu", key(), kFormatCheck,
                        kFormatCheckPlace, kMagic, place);
    }
    if (!hasMagic)
        return ZPFormat("%s wants %08x at %zu", key(), kMagic, place);
    const std::string reason = reasonAgainstRoot(file, headerVersion);
    return reason.empty() ? reason : std::string(key()) + ": " + reason;
}

const ZPGorvaneArchiveFamily *
ZPGorvaneFamilyOfFile(std::span<const std::byte> file,
                      std::span<const ZPGorvaneArchiveFamily *const> families,
                      std::string &reason) {
    std::string reasons;
    for (const ZPGorvaneArchiveFamily *family : families) {
        const std::string against = family->reasonAgainst(file);
        if (against.empty())
            return family;
        reasons += "; " + against;
    }
    reason = "is an archive of no known family: found " + wordText(file, kFormatCheckPlace) + ", " +
             wordText(file, magicPlace(3)) + ", " + wordText(file, magicPlace(1)) + reasons;
    return nullptr;
}
