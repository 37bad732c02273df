// A whole run: options, a client's archive, an older one, a plot file, and what is written. The
// input's first byte has a bit for each option, its second chooses the scale, then come the sizes
// of the plot file and of the older archive in 16 bits each, and these, and the archive.

#include "fuzz/FuzzTarget.h"

#include "io/ZPDataCursor.h"
#include "io/ZPOutputGate.h"
#include "tool/MapRun.h"

#include <array>
#include <fstream>
#include <getopt.h>
#include <iterator>
#include <string>
#include <vector>

namespace {

struct Switch {
    unsigned bit;
    const char *word;
};
constexpr Switch kSwitches[] = {{1, "-a"}, {2, "-g"}, {4, "--snow"}, {8, "-w"}, {16, "-h"}};
constexpr unsigned kPlotBit = 32, kOldBit = 64, kChangesBit = 128;
/// A greater picture would be found in no other way and cost its square.
constexpr const char *kScales[] = {"1", "0", "x", "2"};

/// A client that keeps everything in one archive.
std::string clientWith(const std::string &name, std::span<const std::byte> archive) {
    const std::filesystem::path folder = FuzzFolder() / name;
    if (std::filesystem::create_directory(folder))
        std::filesystem::create_symlink("client_cell_1.dat", folder / "client_portal.dat");
    FuzzWriteFile(name + "/client_cell_1.dat", archive);
    return folder;
}

int run(std::vector<std::string> words) {
    std::vector<char *> arguments;
    for (std::string &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    optind = 0; // getopt starts anew
    ZPBeginNextRun();
    return MapRun().run(static_cast<int>(words.size()), arguments.data());
}

bool isWholePNG(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    using namespace std::string_literals;
    return bytes.starts_with("\x89PNG\r\n\x1A\n"s) && bytes.ends_with("IEND\xAE\x42\x60\x82"s);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    constexpr std::size_t kHeadSize = 6;
    if (size < kHeadSize)
        return 0;
    ZPDataCursor cursor(std::as_bytes(std::span(bytes, size)));
    const unsigned options = cursor.readByte(), scale = cursor.readByte() % std::size(kScales);
    const std::uint64_t plotSize = cursor.readLittleInt16(), oldSize = cursor.readLittleInt16();
    const auto part = [&](std::uint64_t length) {
        return cursor.readDataWithLength(std::min(length, cursor.remaining()));
    };
    const auto plot = part(plotSize), old = part(oldSize), archive = part(cursor.remaining());

    const std::filesystem::path outputs = FuzzFolder() / "outputs";
    std::filesystem::remove_all(outputs);
    std::filesystem::create_directory(outputs);
    std::vector<std::string> words = {"Plotterra", "-s", kScales[scale]};
    for (const auto &[bit, word] : kSwitches)
        if (options & bit)
            words.push_back(word);
    if (options & kPlotBit) {
        FuzzWriteFile("towns.txt", plot);
        words.insert(words.end(), {"-p", FuzzFolder() / "towns.txt"});
    }
    if (options & kOldBit)
        words.insert(words.end(), {"-o", clientWith("older", old)});
    if (options & kChangesBit)
        words.insert(words.end(), {"--save-changes", outputs / "changes.txt"});
    words.insert(words.end(), {clientWith("client", archive), outputs / "map"});

    FuzzExpect(run(words) == 0);
    FuzzExpect(isWholePNG(outputs / "map.png"));
    for (const auto &entry : std::filesystem::directory_iterator(outputs))
        FuzzExpect(entry.path().filename() == "map.png" ||
                   entry.path().filename() == "changes.txt");
    return 0;
}
