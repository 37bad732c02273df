#include "io/ZPLinks.h"

#include <sys/vfs.h>

/// PROC_SUPER_MAGIC of <linux/magic.h>, which not every system has.
constexpr auto kProcessFolder = 0x9fa0;

std::filesystem::path ZPFolderOfPath(const std::filesystem::path &path) {
    return path.has_parent_path() ? path.parent_path() : ".";
}

bool ZPIsInProcessFolder(const std::filesystem::path &path) {
    struct statfs fileSystem {};
    return statfs(ZPFolderOfPath(path).c_str(), &fileSystem) == 0 &&
           fileSystem.f_type == kProcessFolder;
}

std::filesystem::path ZPFollowLinks(std::filesystem::path path) {
    constexpr int kMostLinks = 40; // as many as the system itself follows
    for (int count = 0; count < kMostLinks && !ZPIsInProcessFolder(path); ++count) {
        std::error_code isNoLink;
        const auto target = std::filesystem::read_symlink(path, isNoLink);
        if (isNoLink)
            break;
        path = path.parent_path() / target;
    }
    return path;
}
