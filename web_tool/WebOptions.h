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
    /// The second word itself.
    std::string givenOutputPath;
};

/// The path with the ending ".html" added, unless it has that or ".htm", or leads to a device or a
/// pipe: without it no browser opens the page.
std::string pathWithPageEnding(const std::string &path);

/// What a command line comes to: options, or the status to leave with after what it asked for, or
/// what is wrong with it, was printed.
struct WebCommandLine {
    std::optional<WebOptions> options;
    int status = 0;
};
WebCommandLine parseWebOptions(int argc, const char *const argv[]);
