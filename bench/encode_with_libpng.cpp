// Encodes a picture as libpng does when nothing is asked of it:
//
//     plotterra_bench_libpng PICTURE.png SCALE
//
// Decodes the picture, then encodes it with every pixel enlarged to a square, rows one at a time,
// and prints the seconds spent in encoding alone and the size of the file that it would be.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <png.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Picture {
    png_image image{};
    std::vector<png_byte> pixels;
};

constexpr std::size_t kBytesPerPixel = 4;

bool decode(const char *path, Picture &picture) {
    picture.image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&picture.image, path) == 0)
        return false;
    picture.image.format = PNG_FORMAT_RGBA;
    picture.pixels.resize(PNG_IMAGE_SIZE(picture.image));
    return png_image_finish_read(&picture.image, nullptr, picture.pixels.data(), 0, nullptr) != 0;
}

std::vector<png_byte> enlargedRow(const Picture &picture, std::size_t row, std::size_t scale) {
    const std::size_t width = picture.image.width;
    const png_byte *pixel = &picture.pixels[row * width * kBytesPerPixel];
    std::vector<png_byte> enlarged;
    enlarged.reserve(width * scale * kBytesPerPixel);
    for (std::size_t x = 0; x < width; ++x, pixel += kBytesPerPixel)
        for (std::size_t copy = 0; copy < scale; ++copy)
            enlarged.insert(enlarged.end(), pixel, pixel + kBytesPerPixel);
    return enlarged;
}

void countBytes(png_structp png, png_bytep, std::size_t length) {
    *static_cast<std::size_t *>(png_get_io_ptr(png)) += length;
}

struct Outcome {
    Clock::duration time{};
    std::size_t size = 0;
};

// An error ends the program: libpng's own handler prints it and aborts where no jump is set.
Outcome encode(const Picture &picture, std::size_t scale) {
    Outcome outcome;
    Clock::time_point start = Clock::now();
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &outcome.size, countBytes, nullptr);
    const auto enlarged = [scale](png_uint_32 side) {
        return side * static_cast<png_uint_32>(scale);
    };
    png_set_IHDR(png, info, enlarged(picture.image.width), enlarged(picture.image.height), 8,
                 PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (std::size_t row = 0; row < picture.image.height; ++row) {
        outcome.time += Clock::now() - start;
        const std::vector<png_byte> pixels = enlargedRow(picture, row, scale);
        start = Clock::now();
        for (std::size_t copy = 0; copy < scale; ++copy)
            png_write_row(png, pixels.data());
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    outcome.time += Clock::now() - start;
    return outcome;
}

} // namespace

int main(int argc, char *argv[]) {
    Picture picture;
    const int scale = argc == 3 ? std::atoi(argv[2]) : 0;
    if (scale < 1 || !decode(argv[1], picture))
        return EXIT_FAILURE;
    const Outcome outcome = encode(picture, static_cast<std::size_t>(scale));
    std::printf("%.6f %zu\n", std::chrono::duration<double>(outcome.time).count(), outcome.size);
}
