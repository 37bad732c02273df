#pragma once

#include <optional>
#include <string>
#include <vector>

/// What a program left when it ended.
struct ProgramRun {
    int status = -1;
    /// What it wrote to standard output and to standard error.
    std::string output, log;
    /// Greatest amount of memory it held, in KiB.
    long peakMemory = 0;

    bool logContains(const std::string &text) const { return log.find(text) != std::string::npos; }
    /// The lines of the log without date, process and thread.
    std::vector<std::string> logLines() const;
};

/// Runs a program and waits for it. The first word is its path.
ProgramRun runProgram(const std::vector<std::string> &words);

/// Runs a shell's command on a terminal of its own, to which both streams go. None where the system
/// has no terminal to give.
std::optional<ProgramRun> runOnTerminal(const std::string &command);
