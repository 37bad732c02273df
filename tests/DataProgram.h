#pragma once

#include "tests/ProgramRun.h"

/// Runs plotterra-data.
inline ProgramRun data(std::vector<std::string> words) {
    words.insert(words.begin(), PLOTTERRA_DATA_PROGRAM);
    return runProgram(words);
}
