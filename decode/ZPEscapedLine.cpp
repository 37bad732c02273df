#include "decode/ZPEscapedLine.h"

#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <cstdint>

namespace {

std::size_t lengthOfSequence(unsigned char lead) {
    if (lead < 0x80)
        return 1;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

std::uint32_t characterOf(std::string_view sequence) {
    auto character = static_cast<std::uint32_t>(static_cast<unsigned char>(sequence[0]));
    if (sequence.size() > 1)
        character &= 0x7Fu >> sequence.size();
    for (const char byte : sequence.substr(1))
        character = character << 6 | (static_cast<unsigned char>(byte) & 0x3Fu);
    return character;
}

bool isHarmful(std::uint32_t character) {
    const auto isWithin = [=](std::uint32_t first, std::uint32_t last) {
        return character >= first && character <= last;
    };
    return character < 0x20 || isWithin(0x7F, 0x9F) || isWithin(0x200E, 0x200F) ||
           isWithin(0x2028, 0x202E) || isWithin(0x2066, 0x2069);
}

} // namespace

std::string ZPEscapedLine(std::string_view text) {
    const auto isPlain = [](char byte) { return byte >= 0x20 && byte < 0x7F && byte != '\\'; };
    if (std::ranges::all_of(text, isPlain))
        return std::string(text);
    std::string escaped;
    while (!text.empty()) {
        const std::string_view sequence =
            text.substr(0, lengthOfSequence(static_cast<unsigned char>(text[0])));
        if (!ZPIsValidUTF8(sequence)) {
            escaped += ZPFormat("\\x%02x", static_cast<unsigned char>(text[0]));
            text.remove_prefix(1);
            continue;
        }
        const std::uint32_t character = characterOf(sequence);
        if (character == '\n')
            escaped += "\\n";
        else if (character == '\t')
            escaped += "\\t";
        else if (character == '\\')
            escaped += "\\\\";
        else if (isHarmful(character))
            escaped += ZPFormat("\\u{%x}", character);
        else
            escaped += sequence;
        text.remove_prefix(sequence.size());
    }
    return escaped;
}
