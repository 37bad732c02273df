#include "map/overlay/WQLetteringLibrary.h"

#include "io/ZPSystemLog.h"

#include <cstring>
#include <dlfcn.h>

namespace {

std::vector<std::filesystem::path> &furtherFolders() {
    static std::vector<std::filesystem::path> folders;
    return folders;
}

/// The error that the last call to the dynamic linker met.
std::string linkerError() {
    const char *error = dlerror();
    return error != nullptr ? error : "unknown error of the dynamic linker";
}

/// Null with a reason where the library is not there, or not this program's.
WQMaskMaker *loadFile(const std::filesystem::path &path, std::string &reason) {
    void *library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        reason = linkerError();
        return nullptr;
    }
    WQMaskMaker *maker = nullptr;
    const auto *version = static_cast<const char *>(dlsym(library, "WQLetteringVersion"));
    void *function = version != nullptr ? dlsym(library, "WQLetteringMaskMaker") : nullptr;
    if (function == nullptr)
        reason = linkerError();
    else if (std::strcmp(version, PLOTTERRA_LETTERING_VERSION) != 0)
        reason = ZPFormat("%s: of version %s, the program of version %s", path.c_str(), version,
                          PLOTTERRA_LETTERING_VERSION);
    else if (maker = reinterpret_cast<decltype(&WQLetteringMaskMaker)>(function)(
                 PLOTTERRA_LETTERING_VERSION);
             maker == nullptr)
        reason = ZPFormat("%s: refuses version %s", path.c_str(), PLOTTERRA_LETTERING_VERSION);
    if (maker == nullptr)
        dlclose(library);
    return maker;
}

} // namespace

std::vector<std::filesystem::path> WQLetteringFolders(const std::filesystem::path &program) {
    const std::filesystem::path folder = program.parent_path();
    std::vector<std::filesystem::path> folders = {
        folder, (folder / PLOTTERRA_LETTERING_FOLDER).lexically_normal()};
    folders.insert(folders.end(), furtherFolders().begin(), furtherFolders().end());
    return folders;
}

void WQAddLetteringFolder(std::filesystem::path folder) {
    furtherFolders().push_back(std::move(folder));
}

WQMaskMaker *WQLoadLettering(std::span<const std::filesystem::path> folders,
                             std::vector<std::string> &reasons) {
    for (const std::filesystem::path &folder : folders) {
        // A bare name would be sought all over the system.
        if (!folder.is_absolute()) {
            reasons.push_back(ZPFormat("%s: not an absolute path", folder.c_str()));
            continue;
        }
        if (WQMaskMaker *maker = loadFile(folder / kWQLetteringLibraryName, reasons.emplace_back()))
            return maker;
    }
    return nullptr;
}
