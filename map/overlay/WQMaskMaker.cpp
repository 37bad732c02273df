#include "map/overlay/WQMaskMaker.h"

#include "io/ZPSystemLog.h"
#include "map/overlay/WQLetteringLibrary.h"

namespace {

class EmptyMaskMaker : public WQMaskMaker {
  public:
    std::shared_ptr<const WQMask> maskOfOutline(const WQOutline &, double, double,
                                                double) override {
        return std::make_shared<const WQMask>();
    }
    std::unique_ptr<WQTextSetter> newTextSetter() override {
        class EmptyTextSetter : public WQTextSetter {
            WQTextMask set(const std::string &, const WQFont &) override { return {}; }
        };
        return std::make_unique<EmptyTextSetter>();
    }
};

WQMaskMaker *loadMaskMaker() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    std::vector<std::string> reasons;
    if (error)
        reasons.push_back("/proc/self/exe: " + error.message());
    else if (WQMaskMaker *maker = WQLoadLettering(WQLetteringFolders(program), reasons))
        return maker;
    for (const std::string &reason : reasons)
        ZPLog("Error: shapes and labels are missing on the map: %s", reason.c_str());
    static EmptyMaskMaker empty;
    return &empty;
}

} // namespace

WQMaskMaker &WQMaskMaker::shared() {
    static WQMaskMaker *const maker = loadMaskMaker();
    return *maker;
}
