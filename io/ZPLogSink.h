#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Takes the lines of the system log, without date and process, and those that the library prints
/// to standard output; called by any thread.
using ZPLogSink = void (*)(std::string_view text);

/// Sends what is logged from now on to `sink` instead of the streams; null: to the streams again.
/// May be called before main.
void ZPSetLogSink(ZPLogSink sink);

/// Writes a line with date and process to standard error, past any sink: for a sink that passes
/// lines on.
void ZPWriteLogLine(std::string_view text);

/// While one lives, lines of the log are kept; they go ahead of the first line that is logged after
/// it. For what is done before main, when a program has not said yet where its log goes. Not for
/// several threads.
class ZPLogHold {
  public:
    ZPLogHold();
    ~ZPLogHold();
    ZPLogHold(const ZPLogHold &) = delete;
    ZPLogHold &operator=(const ZPLogHold &) = delete;
};

/// While one lives, what its thread logs is added to some lines and goes nowhere else.
class ZPLogDiversion {
  public:
    using Lines = std::vector<std::string>;

    /// The lines must outlive this; null leads back to where lines go by themselves.
    explicit ZPLogDiversion(Lines *lines);
    ~ZPLogDiversion();
    ZPLogDiversion(const ZPLogDiversion &) = delete;
    ZPLogDiversion &operator=(const ZPLogDiversion &) = delete;

    /// Where what this thread logs is led to; null where it is not.
    [[nodiscard]] static Lines *current();

  private:
    Lines *_outer;
};
