#include "data_tool/Command.h"
#include "io/ZPLogSink.h"

#include <atomic>

namespace {

std::atomic<bool> isVerbose = false;
/// The library logs every step. What of that a user of this tool has to know, commands ask of the
/// archives and say themselves.
void takeLogLine(std::string_view line) {
    if (isVerbose)
        ZPWriteLogLine(line);
}

/// Ahead of the classes that log while they register themselves, before main.
[[gnu::constructor(101)]] void quietenLog() {
    ZPSetLogSink(&takeLogLine);
}

void addGlobalOptions(CLI::App &app, GlobalOptions &options) {
    std::vector<std::string> keys;
    for (const ZPGorvaneArchiveFamily *family : WQArchiveFamilies())
        keys.emplace_back(family->key());
    app.add_option("--game", options.gameKey, "Family of the archives, instead of finding it out")
        ->check(CLI::IsMember(keys))
        ->type_name("KEY");
    app.add_option("--decoders", options.decoderFolders,
                   "Folder with decoders in Lua, ahead of those that are installed; repeatable")
        ->type_name("FOLDER")
        ->allow_extra_args(false);
    app.add_flag("--verbose", options.isVerbose, "Log every step on standard error");
}

int runCommand(const GlobalOptions &options, const CommandAction &action) {
    isVerbose = options.isVerbose;
    try {
        return action(options);
    } catch (const CommandFailure &failure) {
        say(failure.what());
        return failure.status();
    } catch (const std::filesystem::filesystem_error &error) {
        say(error.what());
    }
    return kFoundOrFailed;
}

int refuse(const std::string &reason) {
    say(reason);
    say("`plotterra-data --help` and `plotterra-data COMMAND --help` tell what there is");
    return kUsageError;
}

} // namespace

bool sayWhatMayBeMissing(const DataSet &dataSet) {
    bool isComplete = true;
    for (const Archive &archive : dataSet.archives)
        if (archive.dataFile->findings().countWithoutFile() > 0) {
            say(archive.fileName() + ": files may be missing, since the archive is damaged; "
                                     "`plotterra-data check` says where");
            isComplete = false;
        }
    return isComplete;
}

int statusOver(const DataSet &dataSet, int status) {
    const bool isSound = sayWhatMayBeMissing(dataSet) && dataSet.isSound();
    return status == kFine && !isSound ? kFoundOrFailed : status;
}

int runDataTool(int argc, const char *const *argv) {
    CLI::App app("Looks into the data archives of an online role-playing game.", "plotterra-data");
    // Not one at least, or a mistyped command would not be named.
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.set_version_flag("--version", "plotterra-data " PLOTTERRA_VERSION,
                         "Print the version and leave");
    GlobalOptions options;
    addGlobalOptions(app, options);
    std::vector<std::pair<CLI::App *, CommandAction>> actions;
    for (const CommandRow &row : kCommands) {
        CLI::App *command = app.add_subcommand(row.name, row.summary);
        command->fallthrough();
        actions.emplace_back(command, row.add(*command));
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &help) {
        return app.exit(help); // on standard output
    } catch (const CLI::ExtrasError &error) {
        return refuse(app.get_subcommands().empty()
                          ? "'" + app.remaining().front() + "' is no command"
                          : error.what());
    } catch (const CLI::ParseError &error) {
        return refuse(error.what());
    }
    for (const auto &[command, action] : actions)
        if (command->parsed())
            return runCommand(options, action);
    return refuse("no command is given");
}
