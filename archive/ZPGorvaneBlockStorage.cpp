#include "archive/ZPGorvaneBlockStorage.h"

#include "io/ZPSystemLog.h"

using namespace ZPGorvaneLayout;

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

bool ZPGorvaneBlockStorage::readHeader(std::uint32_t version) {
    _version = version;
    const auto bytes = fileBytes();
    ZPDataCursor cursor(bytes);
    std::uint32_t check = kFormatCheck;
    if (version == 3) {
        cursor.setOffset(kFormatCheckPlace);
        check = cursor.readLittleInt32();
    }
    cursor.setOffset(magicPlace(version));
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

    if (_blockSize < kLeastBlockSize || _blockSize > bytes.size()) {
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
