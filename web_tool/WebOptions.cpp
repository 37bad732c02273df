#include "web_tool/WebOptions.h"

#include "io/ZPText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <sstream>

namespace {

constexpr int kUsageError = 2;

bool isDeviceOrPipe(const std::string &path) {
    std::error_code fault;
    const auto status = std::filesystem::status(path, fault);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
           !std::filesystem::is_directory(status);
}

std::string isNotEmpty(const std::string &text) {
    return text.empty() ? "must not be empty" : "";
}

} // namespace

std::string pathWithPageEnding(const std::string &path) {
    std::string ending = std::filesystem::path(path).extension();
    std::ranges::transform(ending, ending.begin(), [](unsigned char letter) {
        return static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + 32 : letter);
    });
    const bool isPage = ending == ".html" || ending == ".htm";
    return isPage || path.empty() || path.ends_with('/') || isDeviceOrPipe(path) ? path
                                                                                 : path + ".html";
}

WebCommandLine parseWebOptions(int argc, const char *const argv[]) {
    WebOptions options;
    CLI::App app("Writes the world of a directory with client data archives as one HTML file to "
                 "wander about in, flat and in relief.",
                 "plotterra-web");
    app.set_version_flag("--version", "plotterra-web " PLOTTERRA_VERSION);
    app.set_help_flag("-h,--help", "Print this and leave");
    app.add_option("-o,--old", options.oldPath,
                   "Directory of an older client, to show what changed since")
        ->type_name("DIRECTORY")
        ->check(isNotEmpty);
    app.add_option("-p,--plot", options.plotPath, "Places to show, a line each: type;coord;label")
        ->type_name("FILE")
        ->check(isNotEmpty);
    app.add_option("-t,--title", options.title, "The page's title")
        ->type_name("TEXT")
        ->capture_default_str();
    app.add_option("directory", options.inputPath, "Directory with dat files")->required();
    app.add_option("output", options.givenOutputPath, "The file to write; gets the ending html")
        ->required();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        std::ostringstream help, complaint; // which quotes the command line
        const int status = app.exit(error, help, complaint) == 0 ? 0 : kUsageError;
        std::fputs(help.str().c_str(), stdout);
        std::fputs(ZPPrintableText(complaint.str()).c_str(), stderr);
        return {std::nullopt, status};
    }
    options.outputPath = pathWithPageEnding(options.givenOutputPath);
    return {std::move(options), 0};
}
