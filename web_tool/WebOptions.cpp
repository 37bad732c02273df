#include "web_tool/WebOptions.h"

#include <CLI/CLI.hpp>

namespace {

constexpr int kUsageError = 2;

} // namespace

WebCommandLine parseWebOptions(int argc, const char *const argv[]) {
    WebOptions options;
    CLI::App app("Writes the world of a directory with client data archives as one HTML file to "
                 "wander about in, flat and in relief.",
                 "plotterra-web");
    app.set_version_flag("--version", "plotterra-web " PLOTTERRA_VERSION);
    app.set_help_flag("-h,--help", "Print this and leave");
    app.add_option("-o,--old", options.oldPath,
                   "Directory of an older client, to show what changed since")
        ->type_name("DIRECTORY");
    app.add_option("-p,--plot", options.plotPath, "Places to show, a line each: type;coord;label")
        ->type_name("FILE");
    app.add_option("-t,--title", options.title, "The page's title")
        ->type_name("TEXT")
        ->capture_default_str();
    app.add_option("directory", options.inputPath, "Directory with dat files")->required();
    app.add_option("output", options.outputPath, "The file to write")->required();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return {std::nullopt, app.exit(error) == 0 ? 0 : kUsageError};
    }
    return {std::move(options), 0};
}
