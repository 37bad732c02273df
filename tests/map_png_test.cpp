#include "io/ZPParallel.h"
#include "map/WQLandImage.h"
#include "map/png/WQPNGBand.h"
#include "map/png/WQPNGFile.h"
#include "tests/TestSupport.h"

#include <bit>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <zlib.h>

namespace {

/// Land with stretches of one colour, of noise, and without any, so that every path is taken.
WQPixel pixelAt(unsigned x, unsigned y) {
    if (y % 97 < 40)
        return {10, 20, 30, 255};
    if (x % 300 > 250)
        return {};
    const unsigned noise = (x * 2654435761u) ^ (y * 40503u * x);
    return {static_cast<std::uint8_t>(noise), static_cast<std::uint8_t>(noise >> 8),
            static_cast<std::uint8_t>(x), 255};
}

constexpr WQPixel kInk{200, 100, 50, 128};

/// Whether the scribble is on a pixel: a column, a row and a diagonal line.
bool isScribbled(std::size_t column, std::size_t row) {
    return column == 7 || row == 1000 || column == row;
}

std::unique_ptr<const WQDrawing> newScribble(std::size_t scale) {
    auto drawing = std::make_unique<WQDrawing>(scale);
    const auto size = static_cast<double>(drawing->size());
    drawing->fillRectangle({7, 0, 1, size}, kInk);
    drawing->fillRectangle({0, size - 1 - 1000, size, 1}, kInk);
    for (double place = 0; place < size; ++place)
        drawing->fillRectangle({place, size - 1 - place, 1, 1}, kInk);
    return drawing;
}

std::unique_ptr<WQColorImage> sampleImage(std::size_t scale, bool hasOverlay) {
    ZPLargeArray<WQPixel> pixels(std::size_t{kWQLandSize} * kWQLandSize);
    for (unsigned y = 0; y < kWQLandSize; ++y)
        for (unsigned x = 0; x < kWQLandSize; ++x)
            pixels.data()[y * std::size_t{kWQLandSize} + x] = pixelAt(x, y);
    auto image = std::make_unique<WQColorImage>(scale, std::move(pixels));
    if (hasOverlay)
        image->setDrawing(newScribble(scale));
    return image;
}

} // namespace

TEST(PNGFile, DecodesToTheImageAtEveryScale) {
    const TemporaryFolder folder;
    for (const std::size_t scale : {1u, 3u, 8u}) {
        for (const bool hasOverlay : {false, true}) {
            if (scale == 8 && hasOverlay)
                continue; // a gigabyte that teaches nothing more
            ASSERT_TRUE(WQWritePNG(*sampleImage(scale, hasOverlay), folder / "map.png"));
            const DecodedPNG picture = decodePNG(folder / "map.png");
            EXPECT_EQ(picture.chunkTypes, (std::vector<std::string>{"IHDR", "IDAT", "IEND"}));
            ASSERT_EQ(picture.width, kWQLandSize * scale);
            ASSERT_EQ(picture.height, kWQLandSize * scale);
            ASSERT_EQ(picture.bytesPerPixel, 4u);
            std::size_t wrong = 0;
            for (std::size_t row = 0; row < picture.height; ++row)
                for (std::size_t column = 0; column < picture.width; ++column) {
                    WQPixel expected =
                        pixelAt(static_cast<unsigned>(column / scale),
                                static_cast<unsigned>(kWQLandSize - 1 - row / scale));
                    if (hasOverlay && isScribbled(column, row))
                        expected = kInk;
                    wrong += std::memcmp(picture.pixel(column, row), &expected, 4) != 0;
                }
            EXPECT_EQ(wrong, 0u) << "scale " << scale << ", overlay " << hasOverlay;
        }
    }
}

TEST(LandImage, RowsThatADrawingCoversAlikeAreNotTheSame) {
    const auto image = sampleImage(2, false);
    auto drawing = std::make_unique<WQDrawing>(2);
    drawing->fillRectangle({6, 0, 2, static_cast<double>(drawing->size())}, {1, 2, 3, 255});
    image->setDrawing(std::move(drawing));
    std::size_t runCount = 0, rowCount = 0;
    image->readRows(0, image->height(), [&](const WQRowRun &rows) {
        ++runCount;
        rowCount += rows.rowCount;
    });
    EXPECT_EQ(runCount, kWQLandSize);
    EXPECT_EQ(rowCount, 2 * kWQLandSize);
}

TEST(PNGFile, IsTheSameForAnyNumberOfThreads) {
    const TemporaryFolder folder;
    const auto image = sampleImage(2, true);
    std::vector<std::string> files;
    for (const unsigned threads : {1u, 2u, 7u}) {
        ZPWithThreads(threads, [&] { EXPECT_TRUE(WQWritePNG(*image, folder / "map.png")); });
        files.push_back(textOfFile(folder / "map.png"));
    }
    EXPECT_EQ(files[0], files[1]);
    EXPECT_EQ(files[0], files[2]);
}

TEST(PNGFile, LeavesNothingBehindWhereItCannotBeWritten) {
    const TemporaryFolder folder;
    const auto image = std::make_unique<WQGreyImage>(
        1, ZPLargeArray<std::uint8_t>(std::size_t{kWQLandSize} * kWQLandSize));
    std::filesystem::create_directory(folder / "taken.png");
    for (const std::string name : {"missing/map.png", "taken.png"}) {
        ZPError error;
        EXPECT_FALSE(WQWritePNG(*image, folder / name, &error)) << name;
        EXPECT_EQ(error.domain, kZPPOSIXErrorDomain);
    }
    EXPECT_FALSE(WQWritePNG(*image, "/dev/full/map.png"));
    const auto entries = std::filesystem::directory_iterator(folder.path());
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

TEST(PNGFile, HasTheWidthAndTheHeightOfTheImage) {
    /// Pixels that count up.
    class Oblong final : public WQImage {
      public:
        std::size_t width() const override { return 5; }
        std::size_t height() const override { return 3; }
        std::size_t bytesPerPixel() const override { return 1; }
        std::size_t rowsPerBand() const override { return 2; }
        void readRows(std::size_t first, std::size_t count, const RowSink &sink) const override {
            for (std::size_t row = first; row < first + count; ++row) {
                std::array<std::byte, 5> pixels;
                for (std::size_t column = 0; column < pixels.size(); ++column)
                    pixels[column] = static_cast<std::byte>(5 * row + column);
                const WQRowSegment segment{pixels, 1};
                sink({{&segment, 1}, 1});
            }
        }
    };
    const TemporaryFolder folder;
    ASSERT_TRUE(WQWritePNG(Oblong(), folder / "map.png"));
    const DecodedPNG picture = decodePNG(folder / "map.png");
    EXPECT_EQ(picture.width, 5u);
    EXPECT_EQ(picture.height, 3u);
    for (std::size_t index = 0; index < picture.bytes.size(); ++index)
        EXPECT_EQ(picture.bytes[index], index);
}

namespace {

/// The row that a band of one row was made of, undone by zlib.
ZPData rowOf(const WQPNGBand::Deflated &band) {
    ZPData bytes(band.length);
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, -15), Z_OK);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<std::byte *>(band.bytes.data()));
    stream.avail_in = static_cast<uInt>(band.bytes.size());
    stream.next_out = reinterpret_cast<Bytef *>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    EXPECT_EQ(inflate(&stream, Z_SYNC_FLUSH), Z_OK) << (stream.msg != nullptr ? stream.msg : "");
    EXPECT_EQ(stream.avail_in + stream.avail_out, 0u);
    inflateEnd(&stream);
    EXPECT_EQ(bytes.front(), std::byte{0}); // not filtered
    bytes.erase(bytes.begin());
    return bytes;
}

/// Whether a row of these pixels, a number each, comes out of a band as it went in.
bool survives(const std::vector<std::uint8_t> &numbers, std::size_t bytesPerPixel,
              std::size_t columnsPerPixel) {
    ZPData pixels, expected;
    for (const std::uint8_t number : numbers)
        for (std::size_t copy = 0; copy < columnsPerPixel; ++copy)
            for (std::size_t place = 0; place < bytesPerPixel; ++place) {
                const auto byte = static_cast<std::byte>(number + place);
                expected.push_back(byte);
                if (copy == 0)
                    pixels.push_back(byte);
            }
    WQPNGBand band(bytesPerPixel);
    const WQRowSegment segment{pixels, columnsPerPixel};
    band.appendRows({{&segment, 1}, 1});
    return rowOf(band.finish()) == expected;
}

} // namespace

TEST(PNGBand, RepeatsAreWholeAtEachLimitOfDeflate) {
    for (const std::size_t bytesPerPixel : {1u, 4u})
        for (const std::size_t columnsPerPixel : {1u, 2u, 3u}) {
            // Runs around each multiple of the longest match, one after the other.
            const std::size_t unit = bytesPerPixel * columnsPerPixel;
            std::vector<std::uint8_t> runs;
            for (std::size_t length = 1; runs.size() * columnsPerPixel < 60'000; ++length)
                if (const std::size_t bytes = length * unit % 258; bytes < 8 || bytes > 252)
                    runs.insert(runs.end(), length, static_cast<std::uint8_t>(length));
            EXPECT_TRUE(survives(runs, bytesPerPixel, columnsPerPixel)) << unit;

            // The same few pixels once more, as far away as a match may reach, and beside that.
            for (std::size_t away = 32768 / unit - 3; away <= 32768 / unit + 3; ++away) {
                std::vector<std::uint8_t> row = {10, 20, 30, 40, 50, 60};
                row.resize(away, 70);
                row.insert(row.end(), {10, 20, 30, 40, 50, 60});
                EXPECT_TRUE(survives(row, bytesPerPixel, columnsPerPixel)) << away;
            }
        }
}

/// Each value twice as rare as the one before makes codes of every length, to the longest and past
/// it.
TEST(PNGBand, CodesOfEveryLengthAreDeclared) {
    std::mt19937 random(5);
    for (int rarest = 4; rarest <= 16; ++rarest) {
        std::vector<std::uint8_t> values;
        for (unsigned index = 0; index < 65'000; ++index) {
            const auto rarity =
                std::min(std::countr_zero(static_cast<std::uint32_t>(random())), rarest);
            values.push_back(static_cast<std::uint8_t>(rarity * 15 + int(random() % 4)));
        }
        EXPECT_TRUE(survives(values, 1, 1)) << rarest;
    }
}

/// A band that is used again must not know what it made before: each case begins with what would
/// tempt it to refer to that.
TEST(PNGBand, MakesTheSameOfRowsWhateverCameBefore) {
    std::vector<std::byte> noise(4 * 600), other(4 * 600);
    for (std::size_t index = 0; index < noise.size(); ++index) {
        noise[index] = static_cast<std::byte>(index * index * 31 >> 3);
        other[index] = static_cast<std::byte>(index * 7 ^ 0x5A);
    }
    const WQRowSegment whole{noise, 2}, otherWhole{other, 2};
    const WQRowSegment halves[] = {{std::span(noise).first(1200), 2},
                                   {std::span(other).first(1200), 2}};
    const WQRowRun once{{&whole, 1}, 1}, thrice{{&whole, 1}, 3}, different{{&otherWhole, 1}, 2};
    const WQRowRun mixed{halves, 2};
    for (const std::size_t bytesPerPixel : {1u, 4u})
        for (const auto &[before, rows] : {std::pair{once, once},
                                           {once, thrice},
                                           {different, once},
                                           {mixed, mixed},
                                           {once, mixed},
                                           {thrice, different}}) {
            WQPNGBand used(bytesPerPixel), fresh(bytesPerPixel);
            used.appendRows(before);
            ASSERT_FALSE(used.finish().bytes.empty());
            used.appendRows(rows);
            fresh.appendRows(rows);
            const WQPNGBand::Deflated again = used.finish(), expected = fresh.finish();
            EXPECT_TRUE(again.bytes == expected.bytes);
            EXPECT_EQ(again.checksum, expected.checksum);
            EXPECT_EQ(again.length, expected.length);
            EXPECT_EQ(again.length, rows.rowCount * (1 + 2 * noise.size()));
        }
}

TEST(Adler32, CountsRepeatedPixelsAsIfTheyWereThere) {
    ZPData pixels(5000 * 4);
    for (std::size_t index = 0; index < pixels.size(); ++index)
        pixels[index] = static_cast<std::byte>(255 - index % 7);
    for (const std::size_t bytesPerPixel : {1u, 4u})
        for (const std::size_t count : {1u, 2u, 8u, 300u}) {
            ZPData repeated;
            for (std::size_t first = 0; first < pixels.size(); first += bytesPerPixel)
                for (std::size_t copy = 0; copy < count; ++copy)
                    repeated.insert(repeated.end(), pixels.begin() + std::ptrdiff_t(first),
                                    pixels.begin() + std::ptrdiff_t(first + bytesPerPixel));
            WQAdler32 expected, checksum;
            expected.append(std::span(repeated).first(10)); // not at the beginning
            checksum = expected;
            expected.append(repeated);
            checksum.appendRepeatedPixels(pixels, bytesPerPixel, count);
            EXPECT_EQ(checksum.value(), expected.value()) << bytesPerPixel << ", " << count;
        }
}

TEST(Adler32, AgreesWithZlibOnZerosAndJoins) {
    ZPData bytes(300'000);
    for (std::size_t index = 0; index < 100'000; ++index)
        bytes[index] = static_cast<std::byte>(index * 7);
    // Up to there the bytes add up to one less than the modulus, so that the first sum is 0; and so
    // does what follows.
    constexpr std::size_t kEndOfZeroSum = 257;
    for (const std::size_t first : {std::size_t{0}, kEndOfZeroSum}) {
        std::fill_n(bytes.begin() + std::ptrdiff_t(first), kEndOfZeroSum - 1, std::byte{255});
        bytes[first + kEndOfZeroSum - 1] = std::byte{240};
    }
    const auto reference = [&](std::size_t first, std::size_t count) {
        return static_cast<std::uint32_t>(adler32(
            1, reinterpret_cast<const Bytef *>(bytes.data() + first), static_cast<uInt>(count)));
    };
    WQAdler32 zeros;
    zeros.append(std::span(bytes).first(100'000));
    zeros.appendZeros(200'000);
    EXPECT_EQ(zeros.value(), reference(0, bytes.size()));
    for (const std::size_t split :
         {std::size_t{0}, std::size_t{1}, kEndOfZeroSum, std::size_t{65'521}, bytes.size()})
        for (const std::size_t end : {2 * kEndOfZeroSum, std::size_t{99'999}, bytes.size()}) {
            if (split > end)
                continue;
            WQAdler32 joined;
            joined.append(std::span(bytes).first(split));
            EXPECT_EQ(split == kEndOfZeroSum, (joined.value() & 0xFFFF) == 0);
            joined.appendChecksum(reference(split, end - split), end - split);
            EXPECT_EQ(joined.value(), reference(0, end)) << split << ", " << end;
        }
}
