#include "map/overlay/WQLetteringLibrary.h"

std::vector<std::filesystem::path> WQLetteringFolders(const std::filesystem::path &) {
    return {};
}

WQMaskMaker *WQLoadLettering(std::span<const std::filesystem::path>,
                             std::vector<std::string> &reasons) {
    reasons.push_back("this system has no letters");
    return nullptr;
}
