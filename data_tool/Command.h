#pragma once

#include "data_tool/DataSet.h"
#include "data_tool/Failure.h"
#include "data_tool/Output.h"
#include "game/WQArchiveFamilies.h"

#include <CLI/CLI.hpp>
#include <functional>

/// What every command understands.
struct GlobalOptions {
    std::string gameKey;
    std::vector<std::string> decoderFolders;
    bool isVerbose = false;

    /// Null where none was named.
    const ZPGorvaneArchiveFamily *family() const { return WQArchiveFamilyWithKey(gameKey); }
    /// Says what was found wrong with the directories, too, unless the log does.
    DataSet openDataSet(const std::string &path) const {
        DataSet dataSet = ::openDataSet(path, family());
        if (!isVerbose)
            dataSet.sayFaults();
        return dataSet;
    }
};

/// What a command does when its options are read; gives the exit status.
using CommandAction = std::function<int(const GlobalOptions &)>;

/// A command is a file of its own with one function, which adds its options and says what it does,
/// and a row here.
struct CommandRow {
    const char *name;
    const char *summary;
    CommandAction (*add)(CLI::App &command);
};

CommandAction addInfoCommand(CLI::App &command);
CommandAction addListCommand(CLI::App &command);
CommandAction addCatCommand(CLI::App &command);
CommandAction addExtractCommand(CLI::App &command);
CommandAction addCheckCommand(CLI::App &command);
CommandAction addDiffCommand(CLI::App &command);
CommandAction addExportCommand(CLI::App &command);
CommandAction addDecodersCommand(CLI::App &command);

inline constexpr CommandRow kCommands[] = {
    {"info", "what an archive or a data directory holds", &addInfoCommand},
    {"list", "its files, one a line", &addListCommand},
    {"cat", "one file, as bytes or decoded", &addCatCommand},
    {"extract", "files to disk", &addExtractCommand},
    {"check", "what is wrong with it", &addCheckCommand},
    {"diff", "what changed between two", &addDiffCommand},
    {"export", "heights, land types, roads, blocks or places for GIS programs", &addExportCommand},
    {"decoders", "the decoders that are there", &addDecodersCommand},
};

/// For an option that would be as good as not given with an empty text, and mean something else.
inline std::string isNotEmpty(const std::string &text) {
    return text.empty() ? "must not be empty" : "";
}

/// The exit status of a command that goes over a data set: not kFine where an archive could not be
/// opened, or where something in one could not be read. Says last where files may be missing
/// altogether.
[[nodiscard]] int statusOver(const DataSet &dataSet, int status);
/// Says of which archives files may be missing; false where there is one.
[[nodiscard]] bool sayWhatMayBeMissing(const DataSet &dataSet);

/// Reads a command line, runs its command and gives the exit status.
int runDataTool(int argc, const char *const *argv);
