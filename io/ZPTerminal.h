#pragma once

#include <string_view>

/// Whether a stream is a terminal that understands more than lines of text.
[[nodiscard]] bool ZPIsCapableTerminal(int descriptor);

/// Writes the line `<program>: <text>` to standard error in one piece, whatever characters the text
/// has, in place of what is shown of progress.
void ZPComplain(const char *program, std::string_view text);

/// One line on standard error that tells what is under way and changes in place, cut to the width
/// that the terminal has at that time; nothing where it is no such terminal. It goes with the
/// object.
class ZPProgressLine {
  public:
    ZPProgressLine();
    ~ZPProgressLine();
    ZPProgressLine(const ZPProgressLine &) = delete;
    ZPProgressLine &operator=(const ZPProgressLine &) = delete;

    bool isShown() const { return _isShown; }
    void show(std::string_view text);

  private:
    const bool _isShown;
};
