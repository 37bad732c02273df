#include "tests/TestSupport.h"

#include "io/ZPSystemLog.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <png.h>
#include <stdexcept>

TemporaryFolder::TemporaryFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "plotterra-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr)
        throw std::runtime_error("no temporary folder: " + path);
    _path = path;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

CapturedLog::CapturedLog() {
    testing::internal::CaptureStderr();
}

CapturedLog::~CapturedLog() {
    testing::internal::GetCapturedStderr();
}

std::string CapturedLog::take() {
    std::string text = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    return text;
}

std::string textOfFile(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::size_t countOf(const std::string &text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

namespace {

/// Lines that were kept from before main go ahead of the first one after it. No test has to reckon
/// with them.
class KeptLinesFirst : public testing::Environment {
  public:
    void SetUp() override { ZPLog("The tests begin."); }
};

[[maybe_unused]] testing::Environment *const keptLinesFirst =
    testing::AddGlobalTestEnvironment(new KeptLinesFirst);

} // namespace

namespace {

/// A PNG file open for reading by rows.
class Reader {
  public:
    explicit Reader(const std::filesystem::path &path)
        : _file(std::fopen(path.c_str(), "rb"), &std::fclose),
          _reader(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, fail)),
          _info(png_create_info_struct(_reader)) {
        if (_file == nullptr)
            throw std::runtime_error("cannot open " + path.string());
        png_init_io(_reader, _file.get());
        png_set_user_limits(_reader, 20000, 20000);
        png_read_info(_reader, _info);
        width = png_get_image_width(_reader, _info);
        height = png_get_image_height(_reader, _info);
        bytesPerPixel = png_get_channels(_reader, _info);
    }
    ~Reader() { png_destroy_read_struct(&_reader, &_info, nullptr); }

    void readRow(std::uint8_t *pixels) { png_read_row(_reader, pixels, nullptr); }
    /// Checks what follows the last row.
    void finish() { png_read_end(_reader, nullptr); }

    std::uint32_t width, height;
    unsigned bytesPerPixel;

  private:
    static void fail(png_structp, png_const_charp message) { throw std::runtime_error(message); }

    std::unique_ptr<std::FILE, int (*)(std::FILE *)> _file;
    png_structp _reader;
    png_infop _info;
};

std::vector<std::string> chunkTypesOfPNG(const std::filesystem::path &path) {
    const std::string bytes = textOfFile(path);
    std::vector<std::string> types;
    for (std::size_t offset = 8; offset + 8 <= bytes.size();) {
        std::size_t length = 0;
        for (std::size_t index = 0; index < 4; ++index)
            length = length << 8 | static_cast<unsigned char>(bytes[offset + index]);
        const std::string type = bytes.substr(offset + 4, 4);
        if (types.empty() || types.back() != type)
            types.push_back(type);
        offset += length + 12;
    }
    return types;
}

} // namespace

DecodedPNG decodePNG(const std::filesystem::path &path) {
    Reader reader(path);
    DecodedPNG picture{
        reader.width, reader.height, reader.bytesPerPixel, {}, chunkTypesOfPNG(path)};
    const std::size_t rowSize = std::size_t{picture.width} * picture.bytesPerPixel;
    picture.bytes.resize(rowSize * picture.height);
    for (std::size_t row = 0; row < picture.height; ++row)
        reader.readRow(picture.bytes.data() + row * rowSize);
    reader.finish();
    return picture;
}

std::uint32_t forEachRowOfPNG(const std::filesystem::path &path,
                              const std::function<void(const std::uint8_t *pixels)> &row) {
    Reader reader(path);
    std::vector<std::uint8_t> pixels(std::size_t{reader.width} * reader.bytesPerPixel);
    for (std::uint32_t index = 0; index < reader.height; ++index) {
        reader.readRow(pixels.data());
        row(pixels.data());
    }
    reader.finish();
    return reader.width;
}
