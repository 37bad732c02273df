#include "io/ZPAtomicFile.h"
#include "io/ZPOptionComplaints.h"
#include "io/ZPOutputGate.h"
#include "io/ZPProcess.h"
#include "io/ZPTerminal.h"
#include "sample/SampleCells.h"
#include "sample/SampleOwnFile.h"
#include "sample/SampleRecords.h"
#include "sample/SampleWorld.h"

#include <charconv>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace {

constexpr char kUsageText[] =
    "Usage: plotterra-sample [options] <directory>\n\n"
    "Writes the four archives of a made-up world, and towns.txt, to the directory. Options:\n"
    "        --seed <number>      which world (default 3)\n"
    "        --cells <number>     how many dungeon cells, up to 4000000 (default 20000)\n"
    "        --older              the same world some years earlier\n"
    "        --force              replace files that this program did not make\n"
    "        --help               this text\n"
    "        --version            the program's version\n";

constexpr std::uint32_t kMostCells = 4000000;

void complain(const std::string &text) {
    ZPComplain("plotterra-sample", text);
}

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
    ZPComplainOfOptions(argc, argv, "", kLongOptions);
    CommandLine line;
    for (int found; (found = getopt_long(argc, argv, "", kLongOptions, nullptr)) != -1;) {
        if (found == kSeed || found == kCells) {
            const auto number = numberIn<std::uint64_t>(optarg);
            if (!number || (found == kCells && *number > kMostCells)) {
                complain(std::string("not a number in range: '") + optarg + "'");
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
    complain("cannot write " + path.string() + ": " + error.failureReason());
    return false;
}

bool writeTowns(const SampleWorld &world, ZPAtomicFile &file, ZPError *error) {
    const std::string text = SampleSignedText(SamplePlotFile(world.towns()));
    return file.write(std::as_bytes(std::span(text)), error);
}

constexpr struct {
    const char *name;
    bool (*write)(const SampleWorld &, ZPAtomicFile &, ZPError *);
} kFiles[] = {{"client_portal.dat", SampleWritePortalArchive},
              {"client_highres.dat", SampleWriteHighresArchive},
              {"client_cell_1.dat", SampleWriteCellArchive},
              {"client_local_English.dat", SampleWriteLocalArchive},
              {"towns.txt", writeTowns}};

/// Whether something stands where this program wants to write that it did not make; says so. The
/// archives of an installed game are not to be had back. Links and pipes are never its own.
bool hasFileOfOthers(const std::filesystem::path &directory, bool replacesOthers) {
    for (const auto &[name, write] : kFiles) {
        const auto path = directory / name;
        const auto status = std::filesystem::symlink_status(path);
        if (!std::filesystem::exists(status) || std::filesystem::is_directory(status))
            continue; // writing fails by itself on a directory
        const bool isFile = std::filesystem::is_regular_file(status);
        const char *reason =
            isFile ? SampleReasonNotOwn(path) : "is no file but a link or a device";
        if (reason == nullptr || (isFile && replacesOthers))
            continue;
        complain(path.string() + " " + reason + " and is left as it is; choose another directory" +
                 (isFile ? ", or --force to replace it" : ""));
        return true;
    }
    return false;
}

/// All files get their names when all are whole, or a disk that is full would leave half a world.
bool writeWorld(const SampleOptions &options, const std::filesystem::path &directory) {
    ZPError error;
    std::deque<ZPAtomicFile> files;
    for (const auto &[name, write] : kFiles)
        if (!files.emplace_back(directory / name).open(&error))
            return report(directory / name, error);
    ZPProgressLine progress;
    progress.show("shaping the land ...");
    const SampleWorld world(options);
    for (std::size_t place = 0; place < files.size(); ++place) {
        const auto path = directory / kFiles[place].name;
        progress.show(std::string(kFiles[place].name) + " ...");
        if (!kFiles[place].write(world, files[place], &error))
            return report(path, error);
    }
    for (const auto &[name, write] : kFiles)
        if (!ZPMayWrite(directory / name, &error))
            return report(directory / name, error);
    for (std::size_t place = 0; place < files.size(); ++place)
        if (!files[place].commit(&error))
            return report(directory / kFiles[place].name, error);
    return true;
}

int run(const CommandLine &line) {
    // The directory first: nobody should wait for a world that has no place.
    std::error_code fault;
    std::filesystem::create_directories(line.directory, fault);
    if (fault) {
        complain("cannot create " + line.directory.string() + ": " + fault.message());
        return 1;
    }
    if (hasFileOfOthers(line.directory, line.replacesOthers))
        return 1;
    if (!line.replacesOthers)
        ZPSetOutputGuard(&SampleReasonNotOwn);
    return writeWorld(line.options, line.directory) ? 0 : 1;
}

int runWithArguments(int argc, char **argv) {
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
    return run(*line);
}

} // namespace

int main(int argc, char **argv) {
    ZPEndProcess(runWithArguments(argc, argv));
}
