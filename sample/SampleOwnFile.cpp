#include "sample/SampleOwnFile.h"

#include "io/ZPInputFile.h"
#include "io/ZPSHA1.h"
#include "sample/SampleArchiveWriter.h"

#include <vector>

namespace {

constexpr std::string_view kSignature = ";made by plotterra-sample ";

std::string digestOf(std::string_view text) {
    return ZPSHA1DigestString(std::as_bytes(std::span(text.data(), text.size())));
}

} // namespace

std::string SampleSignedText(std::string text) {
    const std::string digest = digestOf(text);
    text.pop_back();
    return text.append(kSignature).append(digest).append("\n");
}

bool SampleIsSignedText(std::string_view text) {
    const std::size_t start = text.rfind(kSignature);
    return start != text.npos &&
           text == SampleSignedText(std::string(text.substr(0, start)) + "\n");
}

const char *SampleReasonNotOwn(const std::filesystem::path &path) {
    // Longer than any list of towns.
    std::vector<std::byte> room(1 << 16);
    const auto start = ZPReadBeginning(path, room);
    if (!start)
        return "cannot be read";
    const std::string_view text(reinterpret_cast<const char *>(start->data()), start->size());
    return SampleBeginsArchive(*start) || SampleIsSignedText(text) ? nullptr
                                                                   : "is not of a sample world";
}
