#include "archive/ZPGorvaneArchiveGuard.h"

#include "archive/ZPGorvaneLayout.h"
#include "io/ZPInputFile.h"

#include <array>

namespace {

using namespace ZPGorvaneLayout;

using Room = std::array<std::byte, headerEnd(3)>;

bool hasWordAt(std::span<const std::byte> bytes, std::size_t place, std::uint32_t word) {
    for (std::size_t i = 0; i < sizeof word; ++i)
        if (place + i >= bytes.size() || bytes[place + i] != static_cast<std::byte>(word >> 8 * i))
            return false;
    return true;
}

} // namespace

bool ZPGorvaneBeginsArchive(std::span<const std::byte> start) {
    return hasWordAt(start, magicPlace(1), kMagic) || hasWordAt(start, magicPlace(3), kMagic) ||
           hasWordAt(start, kFormatCheckPlace, kFormatCheck);
}

bool ZPGorvaneIsArchive(const std::filesystem::path &path) {
    Room room;
    const auto start = ZPReadBeginning(path, room);
    return start && ZPGorvaneBeginsArchive(*start);
}

const char *ZPGorvaneReasonToKeep(const std::filesystem::path &path) {
    Room room;
    const auto start = ZPReadBeginning(path, room);
    if (!start)
        return "cannot be looked into, and is left as it is";
    return ZPGorvaneBeginsArchive(*start) ? "begins as an archive does, and is left as it is"
                                          : nullptr;
}
