#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Standard output, in large pieces. Throws CommandFailure when it cannot be written to, and
/// BrokenPipe when nobody reads it.
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
    void flush();

    /// To be filled directly; `write({})` afterwards flushes it when it is due.
    std::string &buffer() { return _buffer; }

  private:
    static constexpr std::size_t kFlushSize = 1 << 18;
    std::string _buffer;
};

/// Whether a stream is a terminal that understands more than lines of text.
bool isCapableTerminal(int descriptor);
/// Whether to colour what goes to standard output: on such a terminal, unless NO_COLOR is set.
bool usesColor();

/// `2003-01-31T12:34:56Z`, for seconds since 1970.
void appendDate(std::string &text, std::uint32_t seconds);
/// `0x` and eight digits.
void appendIdentifier(std::string &text, std::uint32_t identifier);
void appendNumber(std::string &text, std::uint64_t number);
/// With blanks before it to the given width.
void appendPadded(std::string &text, std::string_view part, std::size_t width);
