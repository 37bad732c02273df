#pragma once

#include "io/ZPData.h"
#include "io/ZPError.h"
#include "io/ZPVector.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

using ZPUUID = std::array<std::byte, 16>;

/// The one reader through which every record is decoded: a read position over borrowed bytes.
///
/// `0 <= offset() <= data().size()` always. Every read is held against the bytes that remain before
/// it moves; one that would pass the end throws ZPRangeException
/// "Trying to read past end in -[ZPDataCursor <operation>]" and consumes nothing. Reads made of
/// several others (vectors, doubles, strings behind a length) name the one that failed, and may
/// have consumed some parts when they throw.
class ZPDataCursor {
  public:
    ZPDataCursor() = delete;
    /// The bytes must outlive the cursor.
    explicit ZPDataCursor(std::span<const std::byte> data) : _data(data) {}

    std::span<const std::byte> data() const { return _data; }
    std::uint64_t offset() const { return _offset; }
    std::uint64_t remaining() const { return _data.size() - _offset; }
    bool isAtEnd() const { return _offset >= _data.size(); }
    bool isOnFourByteBoundary() const { return _offset % 4 == 0; }

    /// The end itself is allowed; beyond it throws "Trying to seek past end of data.".
    void setOffset(std::uint64_t offset);
    void advanceByLength(std::uint64_t length);
    // Skip up to the next offset that is a multiple; the same exception where that is past the end.
    void alignToTwoByteBoundary();
    void alignToFourByteBoundary();

    std::uint8_t readByte() { return readLittle<std::uint8_t>("readByte"); }
    std::uint16_t readLittleInt16() { return readLittle<std::uint16_t>("readLittleInt16"); }
    std::uint32_t readLittleInt32() { return readLittle<std::uint32_t>("readLittleInt32"); }
    std::uint64_t readLittleInt64() { return readLittle<std::uint64_t>("readLittleInt64"); }
    std::uint16_t readBigInt16() { return readBig<std::uint16_t>("readBigInt16"); }
    std::uint32_t readBigInt32() { return readBig<std::uint32_t>("readBigInt32"); }
    std::uint64_t readBigInt64() { return readBig<std::uint64_t>("readBigInt64"); }
    float readLittleFloat32() {
        return std::bit_cast<float>(readLittle<std::uint32_t>("readLittleFloat32"));
    }
    float readBigFloat32() {
        return std::bit_cast<float>(readBig<std::uint32_t>("readBigFloat32"));
    }
    /// Two 32-bit words, the low one first.
    double readLittleFloat64();
    /// Three singles x, y, z.
    ZPVector3 readLittleVector3();
    ZPVector4 readLittleVector4();
    /// Stored w, x, y, z.
    ZPQuaternion readLittleQuaternion();

    /// The next `length` bytes, copied. Peeking does not move.
    ZPData readDataWithLength(std::uint64_t length);
    ZPData peekDataWithLength(std::uint64_t length) const;
    /// Appends the next `length` bytes.
    void readBytesOfLength(std::uint64_t length, ZPData &intoData);
    /// The next `length` bytes without a copy; valid as long as the cursor's data. Whoever takes
    /// many small values at once names the read that it saves, for the exception to name.
    std::span<const std::byte> readSpanOfLength(std::uint64_t length,
                                                const char *operation = "readSpanOfLength:") {
        return take(length, operation);
    }
    ZPUUID readUUID();

    /// `length` UTF-16 little-endian code units, as UTF-8; an unpaired surrogate becomes U+FFFD.
    std::string readUTF16StringOfLength(std::uint64_t length, bool align);
    /// A length byte, then the string.
    std::string readLength8UTF16StringAndAlign(bool align);

    // Strings of the first game: Windows-1252 bytes, given as UTF-8, then optional padding to a
    // multiple of four. The operations differ in how the length is stored.
    std::string wq_readStringOfLength(std::uint64_t length, bool align);
    /// With `swapNibbles` the two halves of each byte are exchanged first.
    std::string wq_readStringOfLength(std::uint64_t length, bool align, bool swapNibbles);
    std::string wq_readLength8StringAndAlign(bool align);
    std::string wq_readLength15StringAndAlign(bool align);
    std::string wq_readLength16StringAndAlign(bool align);
    std::string wq_readLength32StringAndAlign(bool align);
    std::string wq_readLengthVar30StringAndAlign(bool align);
    std::string wq_readLengthVar30UTF16StringAndAlign(bool align);
    std::string wq_readLength15UTF16StringAndAlign(bool align);
    std::string wq_readNibbledLength16StringAndAlign(bool align);
    /// Also appends the swapped bytes to `storeData`.
    std::string wq_readNibbledLength16StringAndAlign(bool align, ZPData &storeData);

    /// `count` bytes (at most 4), most significant first: byte k is shifted left by 24 - 8k.
    std::uint32_t wq_readPartialBigInt32(unsigned count);
    /// One byte below 128, else two bytes, big endian, without the top bit.
    std::uint16_t wq_readLittleInt15();
    /// Always two bytes; the first has its top bit set when it is the high one.
    std::uint16_t wq_readWackyInt15();
    /// One, two or four bytes, told apart by the top two bits of the first:
    ///
    ///     0vvvvvvv
    ///     10vvvvvv vvvvvvvv              big endian
    ///     11hhhhhh hhhhhhhh llllllll LLLLLLLL   h: bits 16-29, big endian; l L: bits 0-15, little
    std::uint32_t wq_readPackedLittleInt30();
    /// A 16-bit word; when its top bit is set, the next 16-bit word in its place.
    std::uint16_t wq_readPackedLittleInt32a();
    /// A 16-bit word; when its top bit is set, the low half of the 32-bit word that follows.
    std::uint16_t wq_readPackedLittleInt32();

    // Reads that trace themselves: "<label>: <value>" through `log`.
    std::uint8_t readByteWithName(std::string_view name);
    std::uint16_t readLittleInt16WithName(std::string_view name);
    std::uint32_t readLittleInt32WithName(std::string_view name);
    std::uint64_t readLittleInt64WithName(std::string_view name);
    std::uint16_t readBigInt16WithName(std::string_view name);
    std::uint32_t readBigInt32WithName(std::string_view name);
    std::uint64_t readBigInt64WithName(std::string_view name);
    std::uint32_t readFourCCWithName(std::string_view name);
    float readLittleFloat32WithName(std::string_view name);
    double readLittleFloat64WithName(std::string_view name);

    bool enableLogging() const { return _enableLogging; }
    void setEnableLogging(bool enable) { _enableLogging = enable; }
    std::uint64_t labelWidth() const { return _labelWidth; }
    /// In characters.
    void setLabelWidth(std::uint64_t width) { _labelWidth = width; }

    /// Writes a line to standard output when logging is enabled; flushes it in every case.
    void log(const char *format, ...) const __attribute__((format(printf, 2, 3)));
    /// An alignment mark (4, 2 or 1) and the offset in eight hexadecimal digits.
    static std::string labelForOffset(std::uint64_t offset);
    std::string labelOffset() const { return labelForOffset(_offset); }
    /// The offset's label and the name, right-aligned in or cut to `labelWidth()` characters.
    std::string labelWithName(std::string_view name) const;

    /// Reads up to `count` 32-bit words, fewer at the end of the data; with `log` lists them in the
    /// system log.
    void skip(std::uint64_t count, bool log);
    void logNextData() { skip(50, true); }
    std::string description() const;

  private:
    [[noreturn]] static void failRead(const char *operation);
    std::string stringOfBytes(std::span<const std::byte> bytes, bool align);
    ZPData takeStringBytes(std::uint64_t length, bool swapNibbles);

    std::span<const std::byte> take(std::uint64_t length, const char *operation) {
        if (length > remaining())
            failRead(operation);
        const auto bytes = _data.subspan(_offset, length);
        _offset += length;
        return bytes;
    }

    template <class Integer>
    static Integer swapBytes(Integer value) {
        if constexpr (sizeof value == 2)
            return __builtin_bswap16(value);
        else if constexpr (sizeof value == 4)
            return __builtin_bswap32(value);
        else if constexpr (sizeof value == 8)
            return __builtin_bswap64(value);
        else
            return value;
    }

    template <class Integer>
    Integer readNative(const char *operation) {
        Integer value;
        std::memcpy(&value, take(sizeof value, operation).data(), sizeof value);
        return value;
    }

    template <class Integer>
    Integer readLittle(const char *operation) {
        const auto value = readNative<Integer>(operation);
        return std::endian::native == std::endian::little ? value : swapBytes(value);
    }

    template <class Integer>
    Integer readBig(const char *operation) {
        const auto value = readNative<Integer>(operation);
        return std::endian::native == std::endian::big ? value : swapBytes(value);
    }

    std::span<const std::byte> _data;
    std::uint64_t _offset = 0;
    std::uint64_t _labelWidth = 20;
    bool _enableLogging = false;
};
