#include "io/ZPText.h"

#include <algorithm>
#include <array>
#include <optional>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// The code page's characters 0x80 to 0x9F; all others are those of Latin-1.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void appendUTF8(std::string &text, char32_t character) {
    const auto append = [&text](char32_t unit) { text.push_back(static_cast<char>(unit)); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0 | character >> 6);
        append(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    }
}

/// Takes one character off the front of `text`; nothing, and one byte taken, where it is malformed.
std::optional<char32_t> nextUTF8(std::string_view &text) {
    const auto byteAt = [&text](std::size_t index) {
        return static_cast<unsigned char>(text[index]);
    };
    const unsigned char lead = byteAt(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    const auto malformed = [&text]() -> std::optional<char32_t> {
        text.remove_prefix(1);
        return std::nullopt;
    };
    if (length == 0 || length > text.size())
        return malformed();

    char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if ((byteAt(index) & 0xC0) != 0x80)
            return malformed();
        character = character << 6 | (byteAt(index) & 0x3F);
    }
    const bool isOverlong =
        (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (isOverlong || isSurrogate || character > 0x10FFFF)
        return malformed();
    text.remove_prefix(length);
    return character;
}

/// Of these a terminal takes commands, or shows what follows in another place.
bool isHarmful(char32_t character) {
    const auto isWithin = [=](char32_t first, char32_t last) {
        return character >= first && character <= last;
    };
    return character < 0x20 || isWithin(0x7F, 0x9F) || character == 0x061C ||
           isWithin(0x200E, 0x200F) || isWithin(0x2028, 0x202E) || isWithin(0x2066, 0x206F);
}

/// What follows the backslash for a character that is often escaped, 0 for any other.
char escapeLetter(char32_t character) {
    switch (character) {
    case '\n': return 'n';
    case '\t': return 't';
    case '\\': return '\\';
    default: return 0;
    }
}

void appendHexadecimal(std::string &text, char32_t number, int fewestDigits) {
    int digits = fewestDigits;
    while (digits < 8 && number >> (4 * digits) != 0)
        ++digits;
    while (digits-- > 0)
        text += "0123456789abcdef"[number >> (4 * digits) & 15];
}

} // namespace

std::string ZPStringFromWindows1252(std::span<const std::byte> bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const std::byte byte : bytes) {
        const auto code = std::to_integer<unsigned>(byte);
        appendUTF8(text, code >= 0x80 && code < 0xA0 ? kWindows1252[code - 0x80] : code);
    }
    return text;
}

ZPData ZPWindows1252FromString(std::string_view text) {
    ZPData bytes;
    bytes.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = nextUTF8(text).value_or(kReplacement);
        char32_t code = '?';
        if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
            code = character;
        } else if (const auto *found = std::ranges::find(kWindows1252, character);
                   found != kWindows1252.end()) {
            code = static_cast<char32_t>(0x80 + (found - kWindows1252.begin()));
        }
        bytes.push_back(static_cast<std::byte>(code));
    }
    return bytes;
}

std::string ZPStringFromUTF16(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    for (std::size_t index = 0; index < units.size(); ++index) {
        const char32_t unit = units[index];
        const bool isHigh = unit >= 0xD800 && unit < 0xDC00;
        const char32_t next = index + 1 < units.size() ? units[index + 1] : 0;
        if (isHigh && next >= 0xDC00 && next < 0xE000) {
            appendUTF8(text, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
            ++index;
        } else {
            appendUTF8(text, unit >= 0xD800 && unit < 0xE000 ? kReplacement : unit);
        }
    }
    return text;
}

std::u16string ZPUTF16FromString(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = nextUTF8(text).value_or(kReplacement);
        if (character < 0x10000) {
            units.push_back(static_cast<char16_t>(character));
        } else {
            units.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
        }
    }
    return units;
}

std::string ZPEscapedText(std::string_view text, std::string_view allowed) {
    const auto isPlain = [](char byte) { return byte >= 0x20 && byte < 0x7F && byte != '\\'; };
    if (std::ranges::all_of(text, isPlain))
        return std::string(text);
    std::string escaped;
    escaped.reserve(text.size());
    while (!text.empty()) {
        const std::string_view rest = text;
        const std::optional<char32_t> character = nextUTF8(text);
        const std::string_view bytes = rest.substr(0, rest.size() - text.size());
        if (!character) {
            for (const char byte : bytes)
                appendHexadecimal(escaped.append("\\x"), static_cast<unsigned char>(byte), 2);
        } else if ((!isHarmful(*character) && *character != '\\') ||
                   allowed.find(bytes) != allowed.npos) {
            escaped += bytes;
        } else if (const char letter = escapeLetter(*character)) {
            escaped.append(1, '\\').append(1, letter);
        } else {
            appendHexadecimal(escaped.append("\\u{"), *character, 2);
            escaped += '}';
        }
    }
    return escaped;
}

std::string ZPPrintableText(std::string_view text) {
    return ZPIsPlainText(text) ? std::string(text) : ZPEscapedText(text, "\n\t\\");
}

bool ZPIsPlainText(std::string_view text) {
    // Stretches of a known length and without a way out, which compilers turn into vectors.
    constexpr std::size_t kStretch = 32;
    const auto isPlain = [](const char *bytes, std::size_t size) {
        unsigned char other = 0;
        for (std::size_t index = 0; index < size; ++index) {
            const auto byte = static_cast<unsigned char>(bytes[index]);
            const auto aboveBlank = static_cast<unsigned char>(byte - ' ');
            other |= static_cast<unsigned char>(aboveBlank >= 0x7F - ' ') &
                     static_cast<unsigned char>(byte != '\n') &
                     static_cast<unsigned char>(byte != '\t');
        }
        return other == 0;
    };
    for (; text.size() >= kStretch; text.remove_prefix(kStretch))
        if (!isPlain(text.data(), kStretch))
            return false;
    return isPlain(text.data(), text.size());
}

std::string ZPPrintableJSON(std::string_view json) {
    if (ZPIsPlainText(json))
        return std::string(json);
    std::string printable;
    printable.reserve(json.size());
    while (!json.empty()) {
        const std::string_view rest = json;
        const char32_t character = nextUTF8(json).value_or(kReplacement);
        // Controls among ASCII are escaped already, or line ends between values.
        if (character >= 0x7F && (isHarmful(character) || character == kReplacement))
            appendHexadecimal(printable.append("\\u"), character, 4);
        else
            printable += rest.substr(0, rest.size() - json.size());
    }
    return printable;
}

bool ZPIsValidUTF8(std::string_view text) {
    while (!text.empty())
        if (!nextUTF8(text))
            return false;
    return true;
}

std::size_t ZPCharacterCount(std::string_view text) {
    std::size_t count = 0;
    for (; !text.empty(); ++count)
        nextUTF8(text);
    return count;
}

std::string_view ZPFirstCharacters(std::string_view text, std::size_t count) {
    std::string_view rest = text;
    for (; count > 0 && !rest.empty(); --count)
        nextUTF8(rest);
    return text.substr(0, text.size() - rest.size());
}

std::vector<std::string_view> ZPSplitText(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        const std::size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return pieces;
        text.remove_prefix(end + 1);
    }
}
