#pragma once

#include <chrono>

/// Measures a stage of a run from construction to destruction. Where the environment variable
/// PLOTTERRA_STAGES names a file, the program ends by writing there, for each stage in the order of
/// their first beginning, `<seconds> <name>` with the wall-clock time of all its occurrences. That
/// file is an output like any other, so it is never one that the run reads or writes.
/// Without the variable a stage costs nothing.
class ZPStage {
  public:
    /// The name must be a literal.
    explicit ZPStage(const char *name);
    ~ZPStage();
    ZPStage(const ZPStage &) = delete;
    ZPStage &operator=(const ZPStage &) = delete;

  private:
    const char *_name;
    std::chrono::steady_clock::time_point _start;
};
