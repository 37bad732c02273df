// The programs in one, as a browser runs them: the name that it is called by tells which is meant.

#include "archive/ZPGorvaneArchiveGuard.h"
#include "io/ZPAbandonProcess.h"
#include "io/ZPOutputGate.h"
#include "io/ZPProcess.h"
#include "tool/MapRun.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

int drawMap(int argc, char *argv[]) {
    ZPSetStatusOfFailure(EXIT_SUCCESS);
    ZPSetOutputGuard(&ZPGorvaneReasonToKeep);
    MapRun run;
    return run.run(argc, argv);
}

constexpr struct {
    std::string_view name;
    int (*run)(int argc, char *argv[]);
} kPrograms[] = {{"Plotterra", drawMap}};

} // namespace

int main(int argc, char *argv[]) {
    for (const auto &[name, run] : kPrograms)
        if (name == argv[0])
            ZPEndProcess(run(argc, argv));
    std::fprintf(stderr, "%s is no program of these:\n", argv[0]);
    for (const auto &[name, run] : kPrograms)
        std::fprintf(stderr, "    %.*s\n", static_cast<int>(name.size()), name.data());
    return 2;
}
