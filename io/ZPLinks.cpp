#include "io/ZPLinks.h"

#include <linux/magic.h>
#include <sys/vfs.h>

std::filesystem::path ZPFolderOfPath(const std::filesystem::path &path) {
    return path.has_parent_path() ? path.parent_path() : ".";
}

bool ZPIsInProcessFolder(const std::filesystem::path &path) {
    struct statfs fileSystem {};
    return statfs(ZPFolderOfPath(path).c_str(), &fileSystem) == 0 &&
           fileSystem.f_type == PROC_SUPER_MAGIC;
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
