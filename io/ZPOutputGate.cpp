#include "io/ZPOutputGate.h"

#include "io/ZPLinks.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <vector>

namespace {

/// Where a file is, whichever of its names led there: the file's device and inode or, where there
/// is none, its folder's and its name.
using Place = std::tuple<dev_t, ino_t, std::string>;

/// Nothing for what is no regular file.
std::optional<Place> placeOf(const std::filesystem::path &path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0)
        return S_ISREG(status.st_mode) ? std::optional<Place>({status.st_dev, status.st_ino, {}})
                                       : std::nullopt;
    const auto target = ZPFollowLinks(path);
    if (stat(ZPFolderOfPath(target).c_str(), &status) != 0)
        return std::nullopt;
    return Place{status.st_dev, status.st_ino, target.filename().string()};
}

struct Gate {
    std::mutex lock;
    std::set<std::filesystem::path> inputs;
    std::vector<std::filesystem::path> outputs;
    ZPOutputGuard guard = nullptr;

    bool hasInputAt(const Place &place) const {
        return std::ranges::any_of(inputs,
                                   [&](const auto &input) { return placeOf(input) == place; });
    }
    bool hasOtherOutputAt(const Place &place, const std::filesystem::path &path) const {
        return std::ranges::any_of(outputs, [&](const std::filesystem::path &output) {
            return output != path && placeOf(output) == place;
        });
    }
};

/// Never taken apart, since stage times are written when the program ends.
Gate &gate() {
    static auto *const theGate = new Gate;
    return *theGate;
}

bool refuse(ZPError *error, ZPOutputErrorCode code, const char *reason) {
    return ZPFail(error, {kZPOutputErrorDomain,
                          static_cast<int>(code),
                          {{NSLocalizedFailureReasonErrorKey, std::string(reason)}}});
}

bool mayWrite(const Gate &gate, const std::filesystem::path &path, ZPError *error) {
    const auto place = placeOf(path);
    if (!place)
        return true;
    if (gate.hasInputAt(*place))
        return refuse(error, ZPOutputErrorCode::input,
                      "is among the files that are read, and is not written over");
    if (gate.hasOtherOutputAt(*place, path))
        return refuse(error, ZPOutputErrorCode::otherOutput,
                      "is another output of the same run as well");
    const bool isThere = std::get<std::string>(*place).empty();
    if (const char *reason = isThere && gate.guard != nullptr ? gate.guard(path) : nullptr)
        return refuse(error, ZPOutputErrorCode::content, reason);
    return true;
}

} // namespace

void ZPNoteInput(const std::filesystem::path &path) {
    const std::lock_guard guard(gate().lock);
    gate().inputs.insert(path);
}

bool ZPAnnounceOutput(const std::filesystem::path &path, ZPError *error) {
    const std::lock_guard guard(gate().lock);
    if (!mayWrite(gate(), path, error))
        return false;
    auto &outputs = gate().outputs;
    if (placeOf(path) && std::ranges::find(outputs, path) != outputs.end())
        return refuse(error, ZPOutputErrorCode::otherOutput,
                      "is another output of the same run as well");
    outputs.push_back(path);
    return true;
}

void ZPBeginNextRun() {
    const std::lock_guard guard(gate().lock);
    gate().inputs.clear();
    gate().outputs.clear();
}

bool ZPMayWrite(const std::filesystem::path &path, ZPError *error) {
    const std::lock_guard guard(gate().lock);
    return mayWrite(gate(), path, error);
}

void ZPSetOutputGuard(ZPOutputGuard guard) {
    const std::lock_guard lock(gate().lock);
    gate().guard = guard;
}
