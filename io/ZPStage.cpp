#include "io/ZPStage.h"

#include "io/ZPAtomicFile.h"
#include "io/ZPOutputGate.h"
#include "io/ZPSystemLog.h"

#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// Holds the pipe open that a path leads to, if it leads to one, for opening it once more would
/// wait until somebody reads it.
class HeldPipe {
  public:
    explicit HeldPipe(const char *path) {
        struct stat status {};
        _isPipe = stat(path, &status) == 0 && S_ISFIFO(status.st_mode);
        if (_isPipe)
            _descriptor = open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    }
    ~HeldPipe() {
        if (_descriptor >= 0)
            close(_descriptor);
    }
    HeldPipe(const HeldPipe &) = delete;
    HeldPipe &operator=(const HeldPipe &) = delete;

    bool hasNoReader() const { return _isPipe && _descriptor < 0; }

  private:
    bool _isPipe;
    int _descriptor = -1;
};

/// The times of one run, written when the program ends.
class StageTimes {
  public:
    /// Null where nobody asked.
    static StageTimes *ofThisRun() {
        static StageTimes *const times = [] {
            const char *path = std::getenv("PLOTTERRA_STAGES");
            return path != nullptr && *path != '\0' ? new StageTimes(path) : nullptr;
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
        ZPError error;
        if (!ZPAnnounceOutput(path, &error)) {
            logFailure(error.failureReason());
            return;
        }
        const auto write = [] { ofThisRun()->write(); };
        std::atexit(write);
        std::at_quick_exit(write);
    }

    void write() const {
        std::string text;
        for (const auto &[name, time] : _times)
            text += ZPFormat("%.6f %s\n", std::chrono::duration<double>(time).count(), name);
        const HeldPipe pipe(_path);
        if (pipe.hasNoReader())
            return logFailure("is a pipe that nobody reads");
        ZPError error;
        if (!ZPWriteTextToPath(text, _path, &error))
            logFailure(error.failureReason());
    }

    void logFailure(const std::string &reason) const {
        ZPLog("Error: the times of the stages are not written: %s: %s", _path, reason.c_str());
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
