#include "tool/Options.h"

#include "io/ZPOptionComplaints.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

enum LongOnly { kSaveChanges = 1000, kSnow = 1002 };

constexpr char kShortOptions[] = "aghmo:p:s:w";
constexpr option kLongOptions[] = {
    {"alpha", no_argument, nullptr, 'a'},
    {"grid", no_argument, nullptr, 'g'},
    {"old", required_argument, nullptr, 'o'},
    {"scale", required_argument, nullptr, 's'},
    {"snow", no_argument, nullptr, kSnow},
    {"water", no_argument, nullptr, 'w'},
    {"plot", required_argument, nullptr, 'p'},
    {"save-changes", required_argument, nullptr, kSaveChanges},
    {"height-map", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
};

/// The number that a text begins with, 0 where it begins with none; one that does not fit is the
/// nearest that does.
int intOfText(const char *text) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(
        std::clamp<long>(std::strtol(text, nullptr, 10), Limits::min(), Limits::max()));
}

constexpr char kVersion[] = "v3 (Compiled: Jan 11 2016 03:11:02)";

} // namespace

std::optional<Options> parseOptions(int argc, char *argv[]) {
    ZPComplainOfOptions(argc, argv, kShortOptions, kLongOptions);
    Options options;
    bool isUsageError = false;
    int value;
    while ((value = getopt_long(argc, argv, kShortOptions, kLongOptions, nullptr)) != -1) {
        switch (value) {
        case 'a': options.useAlpha = true; break;
        case 'g': options.drawGrid = true; break;
        case 'h': options.heightMap = true; break;
        case 'w': options.falseColorWater = true; break;
        case kSnow: options.snow = true; break;
        case 's': options.scale = intOfText(optarg); break;
        case 'o': options.oldPath = optarg; break;
        case 'p': options.plotPath = optarg; break;
        case kSaveChanges: options.changesPath = optarg; break;
        default: isUsageError = true; break;
        }
    }
    if (isUsageError || argc - optind < 2)
        return std::nullopt;
    options.inputPath = argv[optind];
    options.givenOutputPath = argv[optind + 1];
    options.outputPath = pathWithPNGExtension(options.givenOutputPath);
    return options;
}

void printUsage() {
    std::fprintf(
        stderr,
        "Plotterra %s\n"
        "Usage: Plotterra [options] <directory with dat files> <output filename>\n"
        "\n"
        " where 'output filename' gets a png extension added automatically, and options are:\n"
        "        -a                   use alpha for unexplored regions\n"
        "        -g                   draw grid\n"
        "        --old <directory>    path to directory with old cell data file to compare "
        "against\n"
        "        -s <scale>           scale map (1-8)\n"
        "        --snow               generate a snowy map\n"
        "        -w                   show all water as bright blue\n"
        "        --plot <coords.txt>  draw markers at the coordinates listed in given file "
        "(type;coord;label)\n"
        "        -h                   generate height map\n"
        "\n",
        kVersion);
}

std::string pathWithPNGExtension(std::string path) {
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    if (path.empty() || path == "/")
        return path; // names no file, and saving says so
    const std::size_t slash = path.rfind('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    const std::size_t dot = path.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > name && dot + 1 < path.size();
    if (hasExtension)
        path.resize(dot);
    return path + ".png";
}
