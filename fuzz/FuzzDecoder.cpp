// A decoder in Lua of the fuzzer's own, or one that comes with the program, and two records for it.
//
//     0     u8    which decoder: those in C++, then those in Lua, then the script that follows
//     1     u16   length of the script
//     3     u16   length of the first record
//     5           script, first record, second record

#include "fuzz/FuzzTarget.h"

#include "decode/WQDecoderSet.h"
#include "decode/ZPRecordTreeDifference.h"
#include "decode/ZPRecordTreeJSON.h"
#include "decode/ZPRecordTreeText.h"

#include <rapidjson/document.h>

namespace {

void expectSoundTree(const ZPRecordTree &tree, std::size_t recordSize) {
    FuzzExpect(tree.depth() == 0);
    std::vector<std::uint32_t> ends = {tree.size()};
    for (std::uint32_t place = 0; place < tree.size(); ++place) {
        const ZPRecordValue &value = tree[place];
        while (ends.back() == place)
            ends.pop_back();
        FuzzExpect(value.end > place && value.end <= ends.back());
        FuzzExpect(value.isContainer() || value.end == place + 1);
        ends.push_back(value.end);
        FuzzExpect(value.range.offset <= recordSize &&
                   value.range.length <= recordSize - value.range.offset);
    }
    // No value makes more than some lines of text, and no byte more than some values.
    constexpr std::size_t kMostPerByte = 4096, kMostPerRecord = 16 << 20;
    FuzzExpect(ZPRecordTreeText(tree, true).size() <= kMostPerRecord + kMostPerByte * recordSize);
    std::string json;
    ZPAppendRecordTreeJSON(json, tree);
    FuzzExpect(json.size() <= kMostPerRecord + kMostPerByte * recordSize);
    FuzzExpect(!rapidjson::Document().Parse(json.data(), json.size()).HasParseError());
    FuzzExpect(ZPRecordTreeDifference(tree, tree).empty());
}

/// What a record decodes to, and how it failed.
std::string outcome(ZPRecordDecoder &decoder, std::span<const std::byte> record,
                    ZPRecordTree &tree) {
    const ZPDecodingResult result = ZPDecodeRecord(decoder, record, tree);
    expectSoundTree(tree, record.size());
    std::string text = result.fault ? result.fault->message : std::to_string(result.bytesLeft);
    FuzzExpect(text.size() < 4096);
    ZPAppendRecordTreeJSON(text, tree);
    return text;
}

/// Twice the first record, with another between: what comes of it is the same.
void decode(ZPRecordDecoder &decoder, std::span<const std::byte> one,
            std::span<const std::byte> other) {
    ZPRecordTree first, second;
    const std::string before = outcome(decoder, one, first);
    outcome(decoder, other, second);
    static_cast<void>(ZPRecordTreeDifference(first, second));
    FuzzExpect(outcome(decoder, one, second) == before);
    FuzzExpect(ZPRecordTreeDifference(first, second).empty());
}

const WQDecoderSet &shippedDecoders() {
    static const WQDecoderSet *const shipped = [] {
        auto *set = new WQDecoderSet;
        FuzzExpect(set->addFolder(PLOTTERRA_DECODERS));
        return set;
    }();
    return *shipped;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    constexpr std::size_t kHeader = 5;
    if (size < kHeader)
        return 0;
    const auto input = std::as_bytes(std::span(bytes, size)).subspan(kHeader);
    const std::size_t scriptSize = std::min<std::size_t>(bytes[1] | bytes[2] * 256u, input.size());
    const auto script = input.first(scriptSize), records = input.subspan(scriptSize);
    const std::size_t oneSize = std::min<std::size_t>(bytes[3] | bytes[4] * 256u, records.size());
    const auto one = records.first(oneSize), other = records.subspan(oneSize);

    const std::size_t rowCount = std::size(kWQRecordDecoders), choice = bytes[0];
    const auto &files = shippedDecoders().files();
    if (choice < rowCount) {
        for (const std::uint32_t version : {1393u, 1394u}) {
            WQDecoders decoders(shippedDecoders(), {version});
            decode(
                *decoders.decoderFor({ZPGorvaneGame::first, kWQRecordDecoders[choice].className}),
                one, other);
        }
    } else if (choice - rowCount < files.size()) {
        decode(*files[choice - rowCount].decoder->copy(), one, other);
    } else {
        FuzzWriteFile("decoder.lua", script);
        std::string message;
        const auto decoder = ZPLuaDecoder::decoderAtPath(FuzzFolder() / "decoder.lua", message);
        FuzzExpect((decoder == nullptr) != message.empty());
        if (decoder != nullptr)
            decode(*decoder, one, other);
    }
    return 0;
}
