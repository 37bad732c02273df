#include "map/overlay/WQMaskMaker.h"

#include "io/ZPForeignCall.h"
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

constexpr char kFault[] = "there is not enough memory for the shapes and labels of the map";

/// Another's masks, with the libraries that make them under guard.
class GuardedTextSetter : public WQTextSetter {
  public:
    explicit GuardedTextSetter(std::unique_ptr<WQTextSetter> setter) : _setter(std::move(setter)) {}
    WQTextMask set(const std::string &text, const WQFont &font) override {
        const ZPForeignCall guard(kFault);
        return _setter->set(text, font);
    }

  private:
    std::unique_ptr<WQTextSetter> _setter;
};

class GuardedMaskMaker : public WQMaskMaker {
  public:
    explicit GuardedMaskMaker(WQMaskMaker &maker) : _maker(maker) {}
    std::shared_ptr<const WQMask> maskOfOutline(const WQOutline &outline, double lineWidth,
                                                double x, double y) override {
        const ZPForeignCall guard(kFault);
        return _maker.maskOfOutline(outline, lineWidth, x, y);
    }
    std::unique_ptr<WQTextSetter> newTextSetter() override {
        const ZPForeignCall guard(kFault);
        return std::make_unique<GuardedTextSetter>(_maker.newTextSetter());
    }

  private:
    WQMaskMaker &_maker;
};

WQMaskMaker *loadMaskMaker() {
    const ZPForeignCall guard(kFault);
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    std::vector<std::string> reasons;
    if (error)
        reasons.push_back("/proc/self/exe: " + error.message());
    else if (WQMaskMaker *maker = WQLoadLettering(WQLetteringFolders(program), reasons)) {
        static GuardedMaskMaker guarded(*maker);
        return &guarded;
    }
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
