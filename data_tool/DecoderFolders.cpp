#include "data_tool/DecoderFolders.h"

#include "io/ZPOutputGate.h"

#include <cstdlib>
#include <system_error>

namespace {

std::filesystem::path folderFromEnvironment(const char *variable, const char *below) {
    const char *folder = std::getenv(variable);
    // A relative path would depend on where the program is run.
    if (folder == nullptr || *folder != '/')
        return {};
    return std::filesystem::path(folder) / below;
}

/// What came of opening a folder; one that merely cannot be looked at may be there.
enum class Opened { yes, isNotThere, fails };

Opened openFolder(const std::filesystem::path &path) {
    std::error_code fault;
    const std::filesystem::directory_iterator entries(path, fault);
    if (!fault)
        return Opened::yes;
    return fault == std::errc::no_such_file_or_directory || fault == std::errc::not_a_directory
               ? Opened::isNotThere
               : Opened::fails;
}

/// Where this program lies; empty, which is said, where the system does not tell.
const std::filesystem::path &programFolder() {
    static const std::filesystem::path folder = [] {
        std::error_code fault;
        const auto program = std::filesystem::read_symlink("/proc/self/exe", fault);
        if (fault)
            say("/proc/self/exe: cannot be read, the decoders beside the program are missing: " +
                fault.message());
        return program.parent_path();
    }();
    return folder;
}

} // namespace

std::vector<std::filesystem::path> decoderFolders(const GlobalOptions &options) {
    std::vector<std::filesystem::path> folders(options.decoderFolders.begin(),
                                               options.decoderFolders.end());
    auto own = folderFromEnvironment("XDG_CONFIG_HOME", "plotterra/decoders");
    if (own.empty())
        own = folderFromEnvironment("HOME", ".config/plotterra/decoders");
    if (!own.empty())
        folders.push_back(std::move(own));
    if (const auto &program = programFolder(); !program.empty()) {
        auto shipped = program.parent_path() / "share/plotterra/decoders";
        // A program that was built and not installed has them beside its build folder.
        auto built = program.parent_path() / "decoders";
        if (openFolder(shipped) != Opened::yes && openFolder(built) != Opened::isNotThere)
            shipped = std::move(built);
        folders.push_back(std::move(shipped));
    }
    return folders;
}

void noteDecoders(const GlobalOptions &options) {
    std::error_code fault;
    for (const auto &folder : decoderFolders(options))
        for (std::filesystem::directory_iterator entry(folder, fault), end; !fault && entry != end;
             entry.increment(fault))
            if (entry->path().extension() == ".lua")
                ZPNoteInput(entry->path());
}

WQDecoderSet loadDecoders(const GlobalOptions &options) {
    noteDecoders(options);
    WQDecoderSet decoders;
    std::size_t namedFolders = options.decoderFolders.size();
    for (const auto &folder : decoderFolders(options)) {
        const bool isNamed = namedFolders > 0;
        namedFolders -= isNamed;
        if (decoders.addFolder(folder))
            continue;
        if (isNamed)
            throw CommandFailure(folder.string() + ": is no folder that can be read");
        if (std::error_code fault; std::filesystem::exists(folder, fault))
            say(folder.string() + ": cannot be read, its decoders are missing");
    }
    for (const auto &file : decoders.files())
        if (const std::string remark = remarkOn(file); !remark.empty())
            say(remark);
    return decoders;
}

std::string remarkOn(const WQDecoderSet::File &file) {
    return file.remark.empty() ? file.fault : file.path.string() + ": " + file.remark;
}
