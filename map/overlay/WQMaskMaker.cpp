#include "map/overlay/WQMaskMaker.h"

#include "io/ZPSystemLog.h"

#include <dlfcn.h>
#include <filesystem>

namespace {

constexpr char kLibrary[] = "plotterra-lettering.so";

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

/// The library stands beside the program, or where it was built.
void *openLibrary() {
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    for (const auto &folder :
         {program.parent_path(), std::filesystem::path(PLOTTERRA_LIBRARY_FOLDER)})
        if (void *library = dlopen((folder / kLibrary).c_str(), RTLD_NOW | RTLD_LOCAL))
            return library;
    return nullptr;
}

WQMaskMaker *loadMaskMaker() {
    if (void *library = openLibrary())
        if (void *maker = dlsym(library, "WQLetteringMaskMaker"))
            return reinterpret_cast<decltype(&WQLetteringMaskMaker)>(maker)();
    ZPLog("Error: shapes and labels are missing on the map: %s", dlerror());
    static EmptyMaskMaker empty;
    return &empty;
}

} // namespace

WQMaskMaker &WQMaskMaker::shared() {
    static WQMaskMaker *const maker = loadMaskMaker();
    return *maker;
}
