#include "game/WQLandTextures.h"

#include "game/WQRecordList.h"
#include "io/ZPSystemLog.h"

namespace {

template <std::size_t count>
std::array<std::uint32_t, count> readWords(ZPDataCursor &cursor) {
    std::array<std::uint32_t, count> words;
    for (std::uint32_t &word : words)
        word = cursor.readLittleInt32();
    return words;
}

} // namespace

WQLandTextures::WQLandTextures(ZPDataCursor &cursor) : header(readWords<2>(cursor)) {
    for (Blend &blend : blends)
        blend = WQReadList(cursor, [&] { return readWords<2>(cursor); });
    textures = WQReadList(cursor, [&] { return readWords<11>(cursor); });
    trailer = readWords<6>(cursor);
}

void WQLandTextures::appendTextDataToString(std::string &text) const {
    text += ZPFormat("u1: %08x, u2: %08x\n", header[0], header[1]);
    for (std::size_t blend = 0; blend < blends.size(); ++blend) {
        text += ZPFormat("\nblend %zu, count: %zu\n", blend + 1, blends[blend].size());
        for (std::size_t entry = 0; entry < blends[blend].size(); ++entry)
            text += ZPFormat("%3zu: %08x %08x\n", entry, blends[blend][entry][0],
                             blends[blend][entry][1]);
    }

    text += "\nLand type texture stuff (main and detail)\n";
    for (std::size_t entry = 0; entry < textures.size(); ++entry) {
        const auto &words = textures[entry];
        text += ZPFormat("%3zu (%3u): %08x", entry, words[0], words[1]);
        for (std::size_t index = 2; index < words.size(); ++index)
            text += ZPFormat(index <= 3 ? "  %08x" : " %08x", words[index]);
        text += '\n';
    }
    text.append(70, '-').append("\n");
    for (std::size_t index = 0; index < trailer.size(); ++index)
        text += ZPFormat("%3zu: %08x\n", index, trailer[index]);
}
