#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Standard output, in large pieces. What must not reach a terminal raw is escaped on the way, in
/// all but what is called raw, so that no command has to think of it. Throws CommandFailure when it
/// cannot be written to, or leads to a file that must not be. A reader that went away, which is its
/// right, is told no more; what the command finds out still decides its status.
class Output {
  public:
    Output() = default;
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void write(std::string_view text) {
        _buffer += text;
        if (_buffer.size() >= kFlushSize)
            flush();
    }
    void format(const char *format, ...) __attribute__((format(printf, 2, 3)));
    /// A file's own bytes, or a terminal's commands.
    void writeRaw(std::string_view bytes);
    void flush();

    /// To be filled directly with text; `write({})` afterwards flushes it when it is due.
    std::string &buffer() { return _buffer; }

  private:
    void makePrintable();

    static constexpr std::size_t kFlushSize = 1 << 18;
    std::string _buffer;
    std::size_t _printableSize = 0; // what lies before it goes out as it is
    bool _isChecked = false, _isRead = true;
};

/// Whether to colour what goes to standard output: on a capable terminal, unless NO_COLOR is set.
bool usesColor();

/// `2003-01-31T12:34:56Z`, for seconds since 1970.
void appendDate(std::string &text, std::uint32_t seconds);
/// `0x` and eight digits.
void appendIdentifier(std::string &text, std::uint32_t identifier);
void appendNumber(std::string &text, std::uint64_t number);
/// With blanks before it to the given width.
void appendPadded(std::string &text, std::string_view part, std::size_t width);
