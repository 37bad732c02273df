#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// What the command line asks for.
struct Options {
    bool useAlpha = false;
    bool drawGrid = false;
    bool snow = false;
    bool falseColorWater = false;
    bool heightMap = false;
    /// As the user gave it; whether it can be drawn is the renderer's affair.
    int scale = 1;
    std::optional<std::string> oldPath;
    std::optional<std::string> plotPath;
    std::optional<std::string> changesPath;
    std::string inputPath;
    std::string outputPath;
    /// The second word itself.
    std::string givenOutputPath;
};

/// None on a usage error, after the parser's own complaint, if it has one.
[[nodiscard]] std::optional<Options> parseOptions(int argc, char *argv[]);

/// To the standard error stream.
void printUsage();

/// The path with the extension of its last component, if any, replaced by "png". A dot at the start
/// of a name begins no extension; slashes at the end are dropped first.
std::string pathWithPNGExtension(std::string path);
