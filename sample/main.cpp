#include "io/ZPAtomicFile.h"
#include "sample/SampleCells.h"
#include "sample/SampleRecords.h"
#include "sample/SampleWorld.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <getopt.h>
#include <optional>
#include <string_view>
#include <system_error>

namespace {

constexpr char usageText[] =
    "Usage: plotterra-sample [options] <directory>\n\n"
    "Writes the four archives of a made-up world, and towns.txt, to the directory. Options:\n"
    "        --seed <number>      which world (default 3)\n"
    "        --cells <number>     how many dungeon cells, up to 4000000 (default 20000)\n"
    "        --older              the same world some years earlier\n"
    "        --help               this text\n";

constexpr std::uint32_t mostCells = 4000000;

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (fault != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

struct CommandLine {
    SampleOptions options;
    std::filesystem::path directory;
    bool wantsHelp = false;
};

/// Nothing when the command line cannot be followed; the reason has been printed then.
std::optional<CommandLine> parse(int argc, char **argv) {
    enum { seed = 1000, cells, older, help };
    static const option longOptions[] = {{"seed", required_argument, nullptr, seed},
                                         {"cells", required_argument, nullptr, cells},
                                         {"older", no_argument, nullptr, older},
                                         {"help", no_argument, nullptr, help},
                                         {nullptr, 0, nullptr, 0}};
    CommandLine line;
    for (int found; (found = getopt_long(argc, argv, "", longOptions, nullptr)) != -1;) {
        if (found == seed || found == cells) {
            const auto number = numberIn<std::uint64_t>(optarg);
            if (!number || (found == cells && *number > mostCells)) {
                std::fprintf(stderr, "plotterra-sample: not a number in range: '%s'\n", optarg);
                return std::nullopt;
            }
            if (found == seed)
                line.options.seed = *number;
            else
                line.options.cells = static_cast<std::uint32_t>(*number);
        } else if (found == older) {
            line.options.older = true;
        } else if (found == help) {
            line.wantsHelp = true;
        } else {
            return std::nullopt;
        }
    }
    if (line.wantsHelp)
        return line;
    if (argc - optind != 1)
        return std::nullopt;
    line.directory = argv[optind];
    return line;
}

bool report(const std::filesystem::path &path, const ZPError &error) {
    std::fprintf(stderr, "plotterra-sample: cannot write %s: %s\n", path.c_str(),
                 error.failureReason().c_str());
    return false;
}

bool writeWorld(const SampleWorld &world, const std::filesystem::path &directory) {
    using ArchiveWriter = bool (*)(const SampleWorld &, const std::filesystem::path &, ZPError *);
    static constexpr struct {
        const char *name;
        ArchiveWriter write;
    } archives[] = {{"client_portal.dat", SampleWritePortalArchive},
                    {"client_highres.dat", SampleWriteHighresArchive},
                    {"client_cell_1.dat", SampleWriteCellArchive},
                    {"client_local_English.dat", SampleWriteLocalArchive}};
    ZPError error;
    for (const auto &archive : archives)
        if (const auto path = directory / archive.name; !archive.write(world, path, &error))
            return report(path, error);
    const auto towns = directory / "towns.txt";
    return ZPWriteTextToPath(SamplePlotFile(world.towns()), towns, &error) || report(towns, error);
}

} // namespace

int main(int argc, char **argv) {
    const std::optional<CommandLine> line = parse(argc, argv);
    if (!line) {
        std::fputs(usageText, stderr);
        return 2;
    }
    if (line->wantsHelp) {
        std::fputs(usageText, stdout);
        return 0;
    }
    // The directory first: nobody should wait for a world that has no place.
    std::error_code fault;
    std::filesystem::create_directories(line->directory, fault);
    if (fault) {
        std::fprintf(stderr, "plotterra-sample: cannot create %s: %s\n", line->directory.c_str(),
                     fault.message().c_str());
        return 1;
    }
    return writeWorld(SampleWorld(line->options), line->directory) ? 0 : 1;
}
