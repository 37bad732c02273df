#include "io/ZPMutableDataCursor.h"

#include "io/ZPExtensions.h"
#include "io/ZPText.h"

void ZPMutableDataCursor::appendLittle(std::uint64_t value, unsigned width) {
    for (unsigned index = 0; index < width; ++index)
        _data.push_back(static_cast<std::byte>(value >> 8 * index));
}

void ZPMutableDataCursor::appendBig(std::uint64_t value, unsigned width) {
    for (unsigned index = width; index > 0; --index)
        _data.push_back(static_cast<std::byte>(value >> 8 * (index - 1)));
}

void ZPMutableDataCursor::writeData(std::span<const std::byte> data) {
    _data.insert(_data.end(), data.begin(), data.end());
}

void ZPMutableDataCursor::writeBytes(const void *bytes, std::size_t length) {
    writeData({static_cast<const std::byte *>(bytes), length});
}

void ZPMutableDataCursor::writeUUID(const ZPUUID &uuid) {
    writeData(uuid);
}

void ZPMutableDataCursor::appendUTF16Units(std::u16string_view units) {
    for (const char16_t unit : units)
        writeLittleInt16(unit);
}

void ZPMutableDataCursor::writeLength8UTF16String(std::string_view text, bool align) {
    const std::u16string units = ZPUTF16FromString(text);
    writeByte(static_cast<std::uint8_t>(units.size()));
    appendUTF16Units(units);
    if (align)
        alignToFourByteBoundary();
}

void ZPMutableDataCursor::wq_writePackedLittleInt30(std::uint32_t value) {
    if (value < 128) {
        writeByte(static_cast<std::uint8_t>(value));
    } else if (value <= 0x3FFF) {
        writeBigInt16(static_cast<std::uint16_t>(value | 0x8000));
    } else {
        writeBigInt16(static_cast<std::uint16_t>(value >> 16 | 0xC000));
        writeLittleInt16(static_cast<std::uint16_t>(value));
    }
}

void ZPMutableDataCursor::wq_writeVar30String(std::string_view text, bool align) {
    const ZPData bytes = ZPWindows1252FromString(text);
    wq_writePackedLittleInt30(static_cast<std::uint32_t>(bytes.size()));
    writeData(bytes);
    if (align)
        alignToFourByteBoundary();
}

void ZPMutableDataCursor::wq_writeVar30UTF16String(std::string_view text, bool align) {
    const std::u16string units = ZPUTF16FromString(text);
    wq_writePackedLittleInt30(static_cast<std::uint32_t>(units.size()));
    appendUTF16Units(units);
    if (align)
        alignToFourByteBoundary();
}

void ZPMutableDataCursor::alignToTwoByteBoundary() {
    if (_data.size() % 2 != 0)
        writeByte(0);
}

void ZPMutableDataCursor::alignToFourByteBoundary() {
    while (_data.size() % 4 != 0)
        writeByte(0);
}
