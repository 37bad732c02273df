#include "io/ZPAtomicFile.h"
#include "io/ZPProcess.h"
#include "sample/SampleArchiveWriter.h"
#include "sample/SampleCells.h"
#include "sample/SampleRecords.h"
#include "sample/SampleWorld.h"

#include <charconv>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <getopt.h>
#include <optional>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace {

constexpr char kUsageText[] =
    "Usage: plotterra-sample [options] <directory>\n\n"
    "Writes the four archives of a made-up world, and towns.txt, to the directory. Options:\n"
    "        --seed <number>      which world (default 3)\n"
    "        --cells <number>     how many dungeon cells, up to 4000000 (default 20000)\n"
    "        --older              the same world some years earlier\n"
    "        --force              replace archives that this program did not make\n"
    "        --help               this text\n"
    "        --version            the program's version\n";

constexpr std::uint32_t kMostCells = 4000000;

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
    bool replacesOthers = false;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

/// Nothing when the command line cannot be followed; the reason has been printed then.
std::optional<CommandLine> parse(int argc, char **argv) {
    enum { kSeed = 1000, kCells, kOlder, kForce, kHelp, kVersion };
    static constexpr option kLongOptions[] = {{"seed", required_argument, nullptr, kSeed},
                                              {"cells", required_argument, nullptr, kCells},
                                              {"older", no_argument, nullptr, kOlder},
                                              {"force", no_argument, nullptr, kForce},
                                              {"help", no_argument, nullptr, kHelp},
                                              {"version", no_argument, nullptr, kVersion},
                                              {nullptr, 0, nullptr, 0}};
    CommandLine line;
    for (int found; (found = getopt_long(argc, argv, "", kLongOptions, nullptr)) != -1;) {
        if (found == kSeed || found == kCells) {
            const auto number = numberIn<std::uint64_t>(optarg);
            if (!number || (found == kCells && *number > kMostCells)) {
                std::fprintf(stderr, "plotterra-sample: not a number in range: '%s'\n", optarg);
                return std::nullopt;
            }
            if (found == kSeed)
                line.options.seed = *number;
            else
                line.options.cells = static_cast<std::uint32_t>(*number);
        } else if (found == kOlder) {
            line.options.older = true;
        } else if (found == kForce) {
            line.replacesOthers = true;
        } else if (found == kHelp) {
            line.wantsHelp = true;
        } else if (found == kVersion) {
            line.wantsVersion = true;
        } else {
            return std::nullopt;
        }
    }
    if (line.wantsHelp || line.wantsVersion)
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

using ArchiveWriter = bool (*)(const SampleWorld &, const std::filesystem::path &, ZPError *);

constexpr struct {
    const char *name;
    ArchiveWriter write;
} kArchives[] = {{"client_portal.dat", SampleWritePortalArchive},
                 {"client_highres.dat", SampleWriteHighresArchive},
                 {"client_cell_1.dat", SampleWriteCellArchive},
                 {"client_local_English.dat", SampleWriteLocalArchive}};
constexpr char kTowns[] = "towns.txt";

/// A line on a terminal that tells what is under way; nothing anywhere else.
class Progress {
  public:
    ~Progress() { show(""); }
    void show(const char *text) {
        if (_isTerminal)
            std::fprintf(stderr, "\r\033[K%s%s", text, *text != '\0' ? " ..." : "");
    }

  private:
    const bool _isTerminal = isatty(STDERR_FILENO) == 1;
};

/// The first file that another program has put where this one wants to write: the archives of an
/// installed game are not to be had back.
std::optional<std::filesystem::path> fileOfOthers(const std::filesystem::path &directory) {
    bool hasOwn = false;
    for (const auto &archive : kArchives) {
        const auto path = directory / archive.name;
        if (SampleIsSampleArchive(path))
            hasOwn = true;
        else if (std::filesystem::exists(std::filesystem::symlink_status(path)))
            return path;
    }
    const auto towns = directory / kTowns;
    if (!hasOwn && std::filesystem::exists(std::filesystem::symlink_status(towns)))
        return towns;
    return std::nullopt;
}

bool writeWorld(const SampleOptions &options, const std::filesystem::path &directory) {
    Progress progress;
    progress.show("shaping the land");
    const SampleWorld world(options);
    ZPError error;
    for (const auto &archive : kArchives) {
        const auto path = directory / archive.name;
        progress.show(path.c_str());
        if (!archive.write(world, path, &error))
            return report(path, error);
    }
    const auto towns = directory / kTowns;
    return ZPWriteTextToPath(SamplePlotFile(world.towns()), towns, &error) || report(towns, error);
}

int run(const CommandLine &line) {
    // The directory first: nobody should wait for a world that has no place.
    std::error_code fault;
    std::filesystem::create_directories(line.directory, fault);
    if (fault) {
        std::fprintf(stderr, "plotterra-sample: cannot create %s: %s\n", line.directory.c_str(),
                     fault.message().c_str());
        return 1;
    }
    if (const auto path = line.replacesOthers ? std::nullopt : fileOfOthers(line.directory)) {
        std::fprintf(stderr,
                     "plotterra-sample: %s is not of a sample world and is left as it is; choose "
                     "another directory, or --force to replace it\n",
                     path->c_str());
        return 1;
    }
    return writeWorld(line.options, line.directory) ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    ZPPrepareProcess();
    const std::optional<CommandLine> line = parse(argc, argv);
    if (!line) {
        std::fputs(kUsageText, stderr);
        return 2;
    }
    if (line->wantsHelp) {
        std::fputs(kUsageText, stdout);
        return 0;
    }
    if (line->wantsVersion) {
        std::puts("plotterra-sample " PLOTTERRA_VERSION);
        return 0;
    }
    try {
        return run(*line);
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "plotterra-sample: %s\n", exception.what());
        return 1;
    }
}
