#include "archive/ZPGorvaneBlockStorage.h"

#include "io/ZPSystemLog.h"

namespace {

constexpr std::uint32_t kMagic = 0x5442;
constexpr std::uint32_t kFormatCheck = 0x004C5000;

} // namespace

// -- opening

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV1StorageWithFileAtPath(const std::filesystem::path &path,
                                                   ZPError *error) {
    return initV1StorageWithFileHandle(_fileHandleAtPath(path, error));
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV2StorageWithFileAtPath(const std::filesystem::path &path,
                                                   ZPError *error) {
    return initV2StorageWithFileHandle(_fileHandleAtPath(path, error));
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV3StorageWithFileAtPath(const std::filesystem::path &path,
                                                   ZPError *error) {
    return initV3StorageWithFileHandle(_fileHandleAtPath(path, error));
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV1StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle) {
    return initWithFileHandle(std::move(fileHandle), 1);
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV2StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle) {
    return initWithFileHandle(std::move(fileHandle), 2);
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initV3StorageWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle) {
    return initWithFileHandle(std::move(fileHandle), 3);
}

std::unique_ptr<ZPGorvaneBlockStorage>
ZPGorvaneBlockStorage::initWithFileHandle(std::unique_ptr<ZPFileHandle> fileHandle,
                                          std::uint32_t version) {
    if (fileHandle == nullptr)
        return nullptr;
    std::unique_ptr<ZPGorvaneBlockStorage> storage(
        new ZPGorvaneBlockStorage(std::move(fileHandle)));
    try {
        return storage->readHeader(version) ? std::move(storage) : nullptr;
    } catch (const ZPRangeException &exception) {
        ZPLog("Caught exception: %s", exception.what());
        return nullptr;
    }
}

// Byte offsets in the file; every field is a little-endian u32.
//
//                  version 1   version 2   version 3
//   format check       -           -          256      0x004C5000
//   magic             300         300         320      0x5442
//   blockSize         304         304         324
//   fileSize          308         308         328
//   contentType       312         312         332
//   contentSubtype     -          316         336
//   firstFreeBlock    316         320         340
//   lastFreeBlock     320         324         344
//   freeBlockCount    324         328         348
//   rootOffset        328         332         352
bool ZPGorvaneBlockStorage::readHeader(std::uint32_t version) {
    _version = version;
    const auto bytes = fileBytes();
    ZPDataCursor cursor(bytes);
    std::uint32_t check = kFormatCheck;
    if (version == 3) {
        cursor.setOffset(256);
        check = cursor.readLittleInt32();
    }
    cursor.setOffset(version == 3 ? 320 : 300);
    const std::uint32_t magic = cursor.readLittleInt32();
    if (version == 3 && (check != kFormatCheck || magic != kMagic)) {
        ZPLog("Bad magic number for V3 storage (%08x %08x)", check, magic);
        return false;
    }
    if (magic != kMagic) {
        ZPLog("Bad magic number for V%u storage", version);
        return false;
    }
    _blockSize = cursor.readLittleInt32();
    _fileSize = cursor.readLittleInt32();
    _contentType = cursor.readLittleInt32();
    if (version != 1)
        _contentSubtype = cursor.readLittleInt32();
    _firstFreeBlock = cursor.readLittleInt32();
    _lastFreeBlock = cursor.readLittleInt32();
    _freeBlockCount = cursor.readLittleInt32();
    _rootOffset = cursor.readLittleInt32();

    if (_blockSize < 8 || _blockSize > bytes.size()) {
        ZPLog("Error: Block size %u does not suit a file of %zu bytes", _blockSize, bytes.size());
        return false;
    }
    return true;
}

std::uint32_t ZPGorvaneBlockStorage::linkAtOffset(std::span<const std::byte> bytes,
                                                  std::uint64_t offset) {
    ZPDataCursor cursor(bytes);
    cursor.setOffset(offset);
    std::uint32_t link = cursor.readLittleInt32();
    // Fetched once: the compiler must not look again after the link was checked, since another
    // program may change the file in between.
    __asm__("" : "+r"(link));
    return link;
}
