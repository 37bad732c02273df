#include "tests/ProgramRun.h"

#include "tests/TestSupport.h"

#include <cstdlib>
#include <fcntl.h>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

std::vector<std::string> ProgramRun::logLines() const {
    static const std::regex prefix(
        R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} Plotterra\[\d+:\d+\] )");
    std::vector<std::string> lines;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(std::regex_replace(line, prefix, ""));
    return lines;
}

ProgramRun runProgram(const std::vector<std::string> &words) {
    const TemporaryFolder folder;
    const std::string outputPath = folder / "output", logPath = folder / "log";
    std::vector<char *> arguments;
    for (const std::string &word : words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);

    const pid_t process = fork();
    if (process == 0) {
        const auto redirect = [](const std::string &path, int to) {
            dup2(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), to);
        };
        redirect(outputPath, STDOUT_FILENO);
        redirect(logPath, STDERR_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (process < 0 || wait4(process, &status, 0, &usage) != process)
        throw std::runtime_error("cannot run " + words.front());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), textOfFile(outputPath),
            textOfFile(logPath), usage.ru_maxrss};
}

std::optional<ProgramRun> runOnTerminal(const std::string &command) {
    const auto run = [](const std::string &line) {
        return runProgram({"/usr/bin/script", "-qec", line, "/dev/null"});
    };
    return run("true").status == 0 ? std::optional(run(command)) : std::nullopt;
}
