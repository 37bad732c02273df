#include "archive/ZPGorvaneArchiveFolder.h"

#include <algorithm>

bool ZPGorvaneIsSameFileName(std::string_view one, std::string_view other) {
    // Not by the language of whoever runs the program.
    const auto lower = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    };
    return std::ranges::equal(one, other, {}, lower, lower);
}

std::vector<std::filesystem::path> ZPGorvaneArchivesInFolder(const std::filesystem::path &folder,
                                                             std::error_code &fault) {
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::directory_iterator entry(folder, fault), end; !fault && entry != end;
         entry.increment(fault))
        if (ZPGorvaneIsSameFileName(entry->path().extension().native(), ".dat"))
            paths.push_back(entry->path());
    if (fault)
        paths.clear();
    std::ranges::sort(paths);
    return paths;
}

std::string ZPGorvaneArchivesInsteadOf(const std::filesystem::path &missing) {
    constexpr std::size_t kMostNames = 4;
    std::error_code fault;
    const auto paths = ZPGorvaneArchivesInFolder(missing.parent_path(), fault);
    if (paths.empty())
        return {};
    std::string names;
    for (std::size_t index = 0; index < std::min(paths.size(), kMostNames); ++index)
        names += (index == 0 ? "" : ", ") + paths[index].filename().string();
    return ", but " + names + (paths.size() > kMostNames ? ", ..." : "") +
           (paths.size() == 1 ? " is" : " are");
}
