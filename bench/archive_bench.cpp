#include "bench/BenchWorld.h"
#include "io/ZPSHA1.h"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

void setBytesPerIteration(benchmark::State &state, std::uint64_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void setItemsPerIteration(benchmark::State &state, std::size_t items) {
    state.SetItemsProcessed(static_cast<std::int64_t>(items) * state.iterations());
}

/// Every file of the archive, in the order of the identifiers.
void readChains(benchmark::State &state) {
    const WQDataFile &dataFile = BenchCellDataFile();
    ZPData scratch;
    for (auto _ : state)
        for (const ZPGorvaneFileEntry &entry : dataFile.fileEntriesByIdentifier())
            benchmark::DoNotOptimize(dataFile.readBytesForFileEntry(entry, scratch));
    setItemsPerIteration(state, dataFile.fileCount());
}
BENCHMARK(readChains)->Unit(benchmark::kMillisecond);

void walkDirectories(benchmark::State &state) {
    const WQDataFile &dataFile = BenchCellDataFile();
    const std::uint32_t root = dataFile.blockStorage()->rootOffset();
    for (auto _ : state)
        benchmark::DoNotOptimize(ZPGorvaneDirectory::initWithDataFile(dataFile, root, true));
    setItemsPerIteration(state, dataFile.fileCount());
}
BENCHMARK(walkDirectories)->Unit(benchmark::kMillisecond);

/// The walk, and the entries put in order, from opening the archive on.
void loadIndex(benchmark::State &state) {
    const WQDataFile &known = BenchCellDataFile();
    for (auto _ : state) {
        WQDataFile dataFile(known.path());
        dataFile.loadFileEntriesIfNecessary();
        benchmark::DoNotOptimize(dataFile.fileCount());
    }
    setItemsPerIteration(state, known.fileCount());
}
BENCHMARK(loadIndex)->Unit(benchmark::kMillisecond);

/// The first 10,000 files, which are small as all files of a cell archive are.
void digestSmallFiles(benchmark::State &state) {
    const WQDataFile &dataFile = BenchCellDataFile();
    const ZPGorvaneFileEntryMap &entries = dataFile.fileEntriesByIdentifier();
    std::vector<ZPData> files;
    std::uint64_t bytes = 0;
    for (std::size_t index = 0; index < std::min<std::size_t>(entries.size(), 10000); ++index)
        if (auto file = dataFile.readDataForFileEntry(entries[index])) {
            bytes += file->size();
            files.push_back(std::move(*file));
        }
    for (auto _ : state)
        for (const ZPData &file : files)
            benchmark::DoNotOptimize(ZPSHA1DigestOfData(file));
    setItemsPerIteration(state, files.size());
    setBytesPerIteration(state, bytes);
}
BENCHMARK(digestSmallFiles)->Unit(benchmark::kMillisecond);

} // namespace
