#include "io/ZPDataCursor.h"

#include "io/ZPExtensions.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

void ZPDataCursor::failRead(const char *operation) {
    throw ZPRangeException(std::string("Trying to read past end in -[ZPDataCursor ") + operation +
                           "]");
}

// -- position

void ZPDataCursor::setOffset(std::uint64_t offset) {
    if (offset > _data.size())
        throw ZPRangeException("Trying to seek past end of data.");
    _offset = offset;
}

void ZPDataCursor::advanceByLength(std::uint64_t length) {
    if (length > remaining())
        throw ZPRangeException("Trying to seek past end of data.");
    _offset += length;
}

void ZPDataCursor::alignToTwoByteBoundary() {
    advanceByLength(_offset % 2);
}

void ZPDataCursor::alignToFourByteBoundary() {
    const std::uint64_t remainder = _offset % 4;
    if (remainder == 0)
        return;
    if (_enableLogging)
        log("%s", labelWithName("align to 4").c_str());
    advanceByLength(4 - remainder);
}

// -- plain reads

double ZPDataCursor::readLittleFloat64() {
    const std::uint64_t low = readLittleInt32();
    const std::uint64_t high = readLittleInt32();
    return std::bit_cast<double>(high << 32 | low);
}

ZPVector3 ZPDataCursor::readLittleVector3() {
    ZPVector3 vector;
    for (float *part : {&vector.x, &vector.y, &vector.z})
        *part = readLittleFloat32();
    return vector;
}

ZPVector4 ZPDataCursor::readLittleVector4() {
    ZPVector4 vector;
    for (float *part : {&vector.x, &vector.y, &vector.z, &vector.w})
        *part = readLittleFloat32();
    return vector;
}

ZPQuaternion ZPDataCursor::readLittleQuaternion() {
    ZPQuaternion quaternion;
    for (float *part : {&quaternion.w, &quaternion.x, &quaternion.y, &quaternion.z})
        *part = readLittleFloat32();
    return quaternion;
}

ZPData ZPDataCursor::readDataWithLength(std::uint64_t length) {
    const auto bytes = take(length, "readDataWithLength:");
    return {bytes.begin(), bytes.end()};
}

ZPData ZPDataCursor::peekDataWithLength(std::uint64_t length) const {
    if (length > remaining())
        failRead("peekDataWithLength:");
    const auto bytes = _data.subspan(_offset, length);
    return {bytes.begin(), bytes.end()};
}

void ZPDataCursor::readBytesOfLength(std::uint64_t length, ZPData &intoData) {
    const auto bytes = take(length, "readBytesOfLength:intoData:");
    intoData.insert(intoData.end(), bytes.begin(), bytes.end());
}

ZPUUID ZPDataCursor::readUUID() {
    const auto bytes = take(sizeof(ZPUUID), "readUUID");
    ZPUUID uuid;
    std::copy(bytes.begin(), bytes.end(), uuid.begin());
    return uuid;
}

std::string ZPDataCursor::readUTF16StringOfLength(std::uint64_t length, bool align) {
    if (length > remaining() / 2)
        failRead("readUTF16StringOfLength:align:");
    std::u16string units(length, u'\0');
    for (char16_t &unit : units)
        unit = readLittleInt16();
    if (align)
        alignToFourByteBoundary();
    return ZPStringFromUTF16(units);
}

std::string ZPDataCursor::readLength8UTF16StringAndAlign(bool align) {
    const std::uint8_t length = readByte();
    return readUTF16StringOfLength(length, align);
}

// -- the first game's strings

std::string ZPDataCursor::stringOfBytes(std::span<const std::byte> bytes, bool align) {
    if (align)
        alignToFourByteBoundary();
    return ZPStringFromWindows1252(bytes);
}

ZPData ZPDataCursor::takeStringBytes(std::uint64_t length, bool swapNibbles) {
    const auto taken = take(length, "wq_readStringOfLength:align:swapNibbles:");
    ZPData bytes(taken.begin(), taken.end());
    if (swapNibbles)
        ZPSwapNibbles(bytes);
    return bytes;
}

std::string ZPDataCursor::wq_readStringOfLength(std::uint64_t length, bool align) {
    return stringOfBytes(take(length, "wq_readStringOfLength:align:"), align);
}

std::string ZPDataCursor::wq_readStringOfLength(std::uint64_t length, bool align,
                                                bool swapNibbles) {
    return stringOfBytes(takeStringBytes(length, swapNibbles), align);
}

std::string ZPDataCursor::wq_readLength8StringAndAlign(bool align) {
    const std::uint8_t length = readByte();
    return wq_readStringOfLength(length, align);
}

std::string ZPDataCursor::wq_readLength15StringAndAlign(bool align) {
    const std::uint16_t length = wq_readLittleInt15();
    return wq_readStringOfLength(length, align);
}

std::string ZPDataCursor::wq_readLength16StringAndAlign(bool align) {
    const std::uint16_t length = readLittleInt16();
    return wq_readStringOfLength(length, align);
}

std::string ZPDataCursor::wq_readLength32StringAndAlign(bool align) {
    const std::uint32_t length = readLittleInt32();
    return wq_readStringOfLength(length, align);
}

std::string ZPDataCursor::wq_readLengthVar30StringAndAlign(bool align) {
    const std::uint32_t length = wq_readPackedLittleInt30();
    return wq_readStringOfLength(length, align);
}

std::string ZPDataCursor::wq_readLengthVar30UTF16StringAndAlign(bool align) {
    const std::uint32_t length = wq_readPackedLittleInt30();
    return readUTF16StringOfLength(length, align);
}

std::string ZPDataCursor::wq_readLength15UTF16StringAndAlign(bool align) {
    const std::uint16_t length = wq_readLittleInt15();
    return readUTF16StringOfLength(length, align);
}

std::string ZPDataCursor::wq_readNibbledLength16StringAndAlign(bool align) {
    const std::uint16_t length = readLittleInt16();
    return wq_readStringOfLength(length, align, true);
}

std::string ZPDataCursor::wq_readNibbledLength16StringAndAlign(bool align, ZPData &storeData) {
    const std::uint16_t length = readLittleInt16();
    const ZPData bytes = takeStringBytes(length, true);
    std::string text = stringOfBytes(bytes, align);
    storeData.insert(storeData.end(), bytes.begin(), bytes.end());
    return text;
}

// -- the first game's integers

std::uint32_t ZPDataCursor::wq_readPartialBigInt32(unsigned count) {
    if (count > 4)
        throw ZPGenericException("A 32-bit integer has no more than four bytes.");
    std::uint32_t value = 0;
    unsigned shift = 24;
    for (const std::byte byte : take(count, "wq_readPartialBigInt32:")) {
        value |= std::to_integer<std::uint32_t>(byte) << shift;
        shift -= 8;
    }
    return value;
}

std::uint16_t ZPDataCursor::wq_readLittleInt15() {
    const unsigned first = readByte();
    if (first < 128)
        return static_cast<std::uint16_t>(first);
    return static_cast<std::uint16_t>((first & 127) << 8 | readByte());
}

std::uint16_t ZPDataCursor::wq_readWackyInt15() {
    const unsigned first = readByte();
    const unsigned second = readByte();
    if (first > 127)
        return static_cast<std::uint16_t>((first & 127) << 8 | second);
    return static_cast<std::uint16_t>(second << 8 | first);
}

std::uint32_t ZPDataCursor::wq_readPackedLittleInt30() {
    const std::uint32_t first = readByte();
    if (first < 128)
        return first;
    const std::uint32_t second = readByte();
    if ((first & 64) == 0)
        return (first & 127) << 8 | second;
    const std::uint32_t low = readLittleInt16();
    return ((first & 63) << 8 | second) << 16 | low;
}

std::uint16_t ZPDataCursor::wq_readPackedLittleInt32a() {
    const std::uint16_t first = readLittleInt16();
    return (first & 0x8000) != 0 ? readLittleInt16() : first;
}

std::uint16_t ZPDataCursor::wq_readPackedLittleInt32() {
    const std::uint16_t first = readLittleInt16();
    // Readers of these records count on the low half alone.
    return (first & 0x8000) != 0 ? static_cast<std::uint16_t>(readLittleInt32()) : first;
}

// -- traced reads

std::uint8_t ZPDataCursor::readByteWithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const std::uint8_t value = readByte();
    log("%s: %02x", label.c_str(), value);
    return value;
}

std::uint16_t ZPDataCursor::readLittleInt16WithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const std::uint16_t value = readLittleInt16();
    log("%s: %04x", label.c_str(), value);
    return value;
}

std::uint32_t ZPDataCursor::readLittleInt32WithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const std::uint32_t value = readLittleInt32();
    log("%s: %08x", label.c_str(), value);
    return value;
}

std::uint64_t ZPDataCursor::readLittleInt64WithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const unsigned long long value = readLittleInt64();
    log("%s: %016llx  %llu", label.c_str(), value, value);
    return value;
}

std::uint16_t ZPDataCursor::readBigInt16WithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const std::uint16_t value = readBigInt16();
    log("%s: %04x", label.c_str(), value);
    return value;
}

std::uint32_t ZPDataCursor::readBigInt32WithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const std::uint32_t value = readBigInt32();
    log("%s: %08x", label.c_str(), value);
    return value;
}

std::uint64_t ZPDataCursor::readBigInt64WithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const unsigned long long value = readBigInt64();
    log("%s: %016llx", label.c_str(), value);
    return value;
}

std::uint32_t ZPDataCursor::readFourCCWithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const std::uint32_t value = readBigInt32();
    // Not as a C string, which ends at a NUL.
    const std::string code = ZPFourCCStringForValue(value);
    log("%s: %08x - %c%c%c%c", label.c_str(), value, code[0], code[1], code[2], code[3]);
    return value;
}

float ZPDataCursor::readLittleFloat32WithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const float value = readLittleFloat32();
    log("%s: %08x - %f", label.c_str(), std::bit_cast<std::uint32_t>(value),
        static_cast<double>(value));
    return value;
}

double ZPDataCursor::readLittleFloat64WithName(std::string_view name) {
    const std::string label = labelWithName(name);
    const double value = readLittleFloat64();
    log("%s: %08llx - %f", label.c_str(), std::bit_cast<unsigned long long>(value), value);
    return value;
}

// -- trace helpers

void ZPDataCursor::log(const char *format, ...) const {
    if (!_enableLogging) {
        std::fflush(stdout);
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    ZPPrintLine(format, arguments);
    va_end(arguments);
}

std::string ZPDataCursor::labelForOffset(std::uint64_t offset) {
    const char *mark = offset % 4 == 0 ? "4" : offset % 2 == 0 ? "2" : "1";
    return ZPFormat("%s %08llx", mark, static_cast<unsigned long long>(offset));
}

std::string ZPDataCursor::labelWithName(std::string_view name) const {
    const std::string_view shown = ZPFirstCharacters(name, _labelWidth);
    const std::string padding = ZPSpacesOfLength(_labelWidth - ZPCharacterCount(shown));
    return labelOffset().append(" ").append(padding).append(shown);
}

void ZPDataCursor::skip(std::uint64_t count, bool log) {
    if (log)
        ZPLog("--------------------");
    for (std::uint64_t index = 0; index < count && remaining() >= 4; ++index) {
        const std::uint32_t bits = readLittleInt32();
        if (log)
            ZPLog("%3llu: %08x (%f)", static_cast<unsigned long long>(index), bits,
                  static_cast<double>(std::bit_cast<float>(bits)));
    }
}

std::string ZPDataCursor::description() const {
    return ZPFormat("<ZPDataCursor: %p> data: %p, length: %zu, offset: %llu",
                    static_cast<const void *>(this), static_cast<const void *>(_data.data()),
                    _data.size(), static_cast<unsigned long long>(_offset));
}
