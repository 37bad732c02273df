#pragma once

#include "io/ZPDataCursor.h"

#include <utility>

/// The writing counterpart of ZPDataCursor: appends values to a growing buffer that it owns.
class ZPMutableDataCursor {
  public:
    ZPMutableDataCursor() = default;
    explicit ZPMutableDataCursor(ZPData data) : _data(std::move(data)) {}

    const ZPData &data() const { return _data; }
    void reserve(std::size_t length) { _data.reserve(length); }
    /// Hands the buffer over; the cursor is empty afterwards.
    ZPData takeData() { return std::exchange(_data, {}); }

    void writeByte(std::uint8_t value) { appendLittle(value, 1); }
    void writeLittleInt16(std::uint16_t value) { appendLittle(value, 2); }
    void writeLittleInt32(std::uint32_t value) { appendLittle(value, 4); }
    void writeLittleInt64(std::uint64_t value) { appendLittle(value, 8); }
    void writeBigInt16(std::uint16_t value) { appendBig(value, 2); }
    void writeBigInt32(std::uint32_t value) { appendBig(value, 4); }
    void writeBigInt64(std::uint64_t value) { appendBig(value, 8); }
    void writeLittleFloat32(float value) { writeLittleInt32(std::bit_cast<std::uint32_t>(value)); }
    void writeLittleFloat64(double value) { writeLittleInt64(std::bit_cast<std::uint64_t>(value)); }
    void writeBigFloat32(float value) { writeBigInt32(std::bit_cast<std::uint32_t>(value)); }
    void writeBigFloat64(double value) { writeBigInt64(std::bit_cast<std::uint64_t>(value)); }

    void writeData(std::span<const std::byte> data);
    void writeBytes(const void *bytes, std::size_t length);
    void writeUUID(const ZPUUID &uuid);

    /// A length byte (UTF-16 units modulo 256), then the units, little endian.
    void writeLength8UTF16String(std::string_view text, bool align);
    /// The form that ZPDataCursor::wq_readPackedLittleInt30 reads; `value` is below 2^30.
    void wq_writePackedLittleInt30(std::uint32_t value);
    /// Packed length, then Windows-1252 bytes.
    void wq_writeVar30String(std::string_view text, bool align);
    /// Packed length in UTF-16 units, then the units, little endian.
    void wq_writeVar30UTF16String(std::string_view text, bool align);

    void alignToTwoByteBoundary();
    void alignToFourByteBoundary();

  private:
    void appendLittle(std::uint64_t value, unsigned width);
    void appendBig(std::uint64_t value, unsigned width);
    void appendUTF16Units(std::u16string_view units);

    ZPData _data;
};
