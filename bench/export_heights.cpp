// Writes what other programs need to do the same work as Plotterra on the same data:
//
//     plotterra_bench_heights WORLD OUT.raw
//
// OUT.raw: real heights, u16 little endian, row by row from the north, and OUT.hdr, an ENVI header,
// so that anything that reads rasters reads them. Prints the number of bytes that comparing the
// cell archive hashes.

#include "game/WQClientData.h"
#include "io/ZPSystemLog.h"
#include "map/land/WQLandGridBuilder.h"

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <vector>

namespace {

// A cell is 12 units of height wide.
constexpr char kHeader[] = "ENVI\n"
                           "samples = %u\n"
                           "lines = %u\n"
                           "bands = 1\n"
                           "header offset = 0\n"
                           "file type = ENVI Standard\n"
                           "data type = 12\n"
                           "interleave = bsq\n"
                           "byte order = 0\n"
                           "map info = {Arbitrary, 1, 1, 0, 0, 12, 12}\n";

bool writeFile(const std::filesystem::path &path, std::span<const std::byte> bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return bool(file.flush());
}

bool writeHeights(const WQLandGrid &grid, std::filesystem::path path) {
    static_assert(std::endian::native == std::endian::little);
    std::vector<std::uint16_t> heights;
    heights.reserve(std::size_t{kWQLandSize} * kWQLandSize);
    for (unsigned y = kWQLandSize; y-- > 0;)
        for (const WQLandPoint &point : grid.row(y))
            heights.push_back(grid.height(point));
    if (!writeFile(path, std::as_bytes(std::span(heights))))
        return false;
    const std::string header = ZPFormat(kHeader, kWQLandSize, kWQLandSize);
    return writeFile(path.replace_extension("hdr"), std::as_bytes(std::span(header)));
}

} // namespace

int main(int argc, char *argv[]) {
    if (argc != 3)
        return 2;
    WQClientData clientData(argv[1]);
    WQDataFile &cellDataFile = *clientData.cellDataFile();
    cellDataFile.loadFileEntriesIfNecessary();
    const auto grid = WQLandGrid::allocate();
    if (grid == nullptr || clientData.worldInfo() == nullptr)
        return EXIT_FAILURE;
    grid->setLandHeights(clientData.worldInfo()->actualLandHeights());
    WQFillLandGrid(*grid, cellDataFile, nullptr);
    if (!writeHeights(*grid, argv[2]))
        return EXIT_FAILURE;
    std::uint64_t bytes = 0;
    for (const ZPGorvaneFileEntry &entry : cellDataFile.fileEntriesByIdentifier())
        bytes += entry.fileSize;
    std::printf("%llu\n", static_cast<unsigned long long>(bytes));
}
