#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// A folder of its own for one test, removed with all it holds.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::filesystem::path &path() const { return _path; }
    std::filesystem::path operator/(const std::string &name) const { return _path / name; }

  private:
    std::filesystem::path _path;
};

/// Keeps what is written to standard error to itself as long as it lives; one at a time.
class CapturedLog {
  public:
    CapturedLog();
    ~CapturedLog();
    CapturedLog(const CapturedLog &) = delete;
    CapturedLog &operator=(const CapturedLog &) = delete;

    /// What was written since the beginning, or since the last call.
    std::string take();
};

/// A PNG file as libpng reads it: 1 byte (grey) or 4 bytes (red, green, blue, alpha) a pixel.
struct DecodedPNG {
    std::uint32_t width = 0, height = 0;
    unsigned bytesPerPixel = 0;
    std::vector<std::uint8_t> bytes;
    /// The types of the file's chunks in order, each once.
    std::vector<std::string> chunkTypes;

    const std::uint8_t *pixel(std::size_t column, std::size_t row) const {
        return bytes.data() + (row * width + column) * bytesPerPixel;
    }
};

/// Throws std::runtime_error with libpng's words, a warning of a wrong checksum included.
DecodedPNG decodePNG(const std::filesystem::path &path);

/// Calls `row` with each row's pixels, from the top, without holding the picture; its width.
std::uint32_t forEachRowOfPNG(const std::filesystem::path &path,
                              const std::function<void(const std::uint8_t *pixels)> &row);

std::string textOfFile(const std::filesystem::path &path);
/// How often a text has a part in it.
std::size_t countOf(const std::string &text, std::string_view part);
