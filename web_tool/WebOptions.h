#pragma once

#include <optional>
#include <string>

/// What the command line of plotterra-web asks for.
struct WebOptions {
    std::optional<std::string> oldPath;
    std::optional<std::string> plotPath;
    std::string title = "Ostvale";
    std::string inputPath;
    std::string outputPath;
};

/// What a command line comes to: options, or the status to leave with after what it asked for, or
/// what is wrong with it, was printed.
struct WebCommandLine {
    std::optional<WebOptions> options;
    int status = 0;
};
WebCommandLine parseWebOptions(int argc, const char *const argv[]);
