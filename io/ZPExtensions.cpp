#include "io/ZPExtensions.h"

#include "io/ZPSystemLog.h"

#include <algorithm>
#include <charconv>
#include <cmath>

std::string ZPHexString(std::span<const std::byte> data) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(data.size() * 2);
    for (const std::byte byte : data) {
        text.push_back(kDigits[std::to_integer<unsigned>(byte >> 4)]);
        text.push_back(kDigits[std::to_integer<unsigned>(byte & std::byte{15})]);
    }
    return text;
}

void ZPAppendLittleInt16(ZPData &data, std::uint16_t value) {
    for (const unsigned shift : {0u, 8u})
        data.push_back(static_cast<std::byte>(value >> shift));
}

void ZPAppendLittleInt32(ZPData &data, std::uint32_t value) {
    for (const unsigned shift : {0u, 8u, 16u, 24u})
        data.push_back(static_cast<std::byte>(value >> shift));
}

void ZPAppendBigInt16(ZPData &data, std::uint16_t value) {
    for (const unsigned shift : {8u, 0u})
        data.push_back(static_cast<std::byte>(value >> shift));
}

void ZPAppendBigInt32(ZPData &data, std::uint32_t value) {
    for (const unsigned shift : {24u, 16u, 8u, 0u})
        data.push_back(static_cast<std::byte>(value >> shift));
}

void ZPSwapNibbles(std::span<std::byte> data) {
    for (std::byte &byte : data)
        byte = byte << 4 | byte >> 4;
}

void ZPAlignToFourByteBoundary(ZPData &data) {
    const std::size_t remainder = data.size() % 4;
    ZPLog("%s, [%08lx] length: %zu, remainder: %zu", "-[ZPData alignToFourByteBoundary]",
          reinterpret_cast<unsigned long>(data.data()), data.size(), remainder);
    if (remainder == 0)
        return;
    ZPLog("Need to append %zu bytes to align", 4 - remainder);
    data.resize(data.size() + 4 - remainder);
}

std::string ZPSpacesOfLength(std::size_t length) {
    return std::string(length, ' ');
}

void ZPAppendSpacesOfLength(std::string &text, std::size_t length) {
    text.append(length, ' ');
}

void ZPIndentToLevel(std::string &text, std::size_t level) {
    ZPAppendSpacesOfLength(text, 2 * level);
}

bool ZPScanHexValue(std::string_view text, std::uint32_t &value) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (text.starts_with("0x") || text.starts_with("0X"))
        text.remove_prefix(2);
    std::uint32_t scanned = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), scanned, 16);
    if (status == std::errc::invalid_argument)
        return false;
    value = status == std::errc::result_out_of_range ? UINT32_MAX : scanned;
    return true;
}

std::string ZPFourCCStringForValue(std::uint32_t value) {
    return ZPFormat("%c%c%c%c", static_cast<int>(value >> 24), static_cast<int>(value >> 16 & 0xFF),
                    static_cast<int>(value >> 8 & 0xFF), static_cast<int>(value & 0xFF));
}

std::string ZPStringForFlags(std::uint32_t flags) {
    std::string text = ZPFormat("%08x", flags);
    std::ranges::replace(text, '0', '.');
    return text;
}

std::string ZPTimeFromSeconds(double seconds) {
    const double days = seconds / 60 / 60 / 24;
    if (!(days >= 365))
        return ZPFormat("%5.2f days (%lf seconds)", days, seconds);
    const double years = std::trunc(days / 365);
    return ZPFormat("%.0f years, %5.2f days (%lf seconds)", years, days - years * 365, seconds);
}

std::string ZPTimeFromMilliseconds(std::uint32_t milliseconds) {
    return ZPTimeFromSeconds(milliseconds / 1000.0);
}

std::string ZPHexDumpRow(std::span<const std::byte> bytes) {
    constexpr std::size_t kBytesPerRow = 16;
    std::string row, characters;
    for (std::size_t index = 0; index < kBytesPerRow; ++index) {
        if (index > 0)
            row += ' ';
        if (index >= bytes.size()) {
            row += "  ";
            continue;
        }
        const auto code = std::to_integer<unsigned char>(bytes[index]);
        row += ZPFormat("%02x", code);
        characters += code >= 0x20 && code <= 0x7E ? static_cast<char>(code) : '.';
    }
    return row + "  |" + characters + "|";
}

void ZPAppendHexDumpOfData(std::string &text, std::span<const std::byte> data,
                           std::string_view prefix) {
    for (; !data.empty(); data = data.subspan(std::min<std::size_t>(16, data.size())))
        text.append(prefix)
            .append(ZPHexDumpRow(data.first(std::min<std::size_t>(16, data.size()))))
            .append("\n");
}
