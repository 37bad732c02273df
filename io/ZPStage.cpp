#include "io/ZPStage.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// The times of one run, written when the program ends.
class StageTimes {
  public:
    /// Null where nobody asked.
    static StageTimes *ofThisRun() {
        static StageTimes *const times = [] {
            const char *path = std::getenv("PLOTTERRA_STAGES");
            return path != nullptr ? new StageTimes(path) : nullptr;
        }();
        return times;
    }

    /// A stage takes its place in the list when it begins.
    void add(std::string_view name, Clock::duration time) {
        const std::lock_guard guard(_lock);
        for (auto &[known, total] : _times)
            if (known == name) {
                total += time;
                return;
            }
        _times.push_back({name.data(), time});
    }

  private:
    explicit StageTimes(const char *path) : _path(path) {
        const auto write = [] { ofThisRun()->write(); };
        std::atexit(write);
        std::at_quick_exit(write);
    }

    void write() const {
        std::FILE *file = std::fopen(_path, "w");
        if (file == nullptr)
            return;
        for (const auto &[name, time] : _times)
            std::fprintf(file, "%.6f %s\n", std::chrono::duration<double>(time).count(), name);
        std::fclose(file);
    }

    struct StageTime {
        const char *name;
        Clock::duration time;
    };

    const char *_path;
    std::mutex _lock;
    std::vector<StageTime> _times;
};

} // namespace

ZPStage::ZPStage(const char *name) : _name(name) {
    if (StageTimes *times = StageTimes::ofThisRun()) {
        times->add(_name, {});
        _start = Clock::now();
    }
}

ZPStage::~ZPStage() {
    if (StageTimes *times = StageTimes::ofThisRun())
        times->add(_name, Clock::now() - _start);
}
