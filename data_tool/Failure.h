#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

// Exit statuses.
inline constexpr int kFine = 0;
/// Something was found, or something could not be done.
inline constexpr int kFoundOrFailed = 1;
inline constexpr int kUsageError = 2;

/// Ends a command with a line on standard error and an exit status.
class CommandFailure : public std::runtime_error {
  public:
    explicit CommandFailure(const std::string &message, int status = kFoundOrFailed)
        : std::runtime_error(message), _status(status) {}
    int status() const { return _status; }

  private:
    int _status;
};

/// Writes `plotterra-data: <text>` to standard error, whatever characters the text has.
void say(const std::string &text);
