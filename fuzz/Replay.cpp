// Replays a corpus: runs every file of the folders named on the command line through a target.

#include "fuzz/FuzzTarget.h"

#include <cstdio>
#include <fstream>
#include <iterator>

int main(int argumentCount, char **arguments) {
    std::size_t count = 0;
    for (int index = 1; index < argumentCount; ++index) {
        for (const auto &entry : std::filesystem::directory_iterator(arguments[index])) {
            std::fprintf(stderr, "replaying %s\n", entry.path().c_str());
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(file)), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()),
                                   bytes.size());
            ++count;
        }
    }
    std::printf("%zu files replayed\n", count);
    // A corpus that is not found must not look like one that passes.
    return count > 0 ? 0 : 1;
}
