#include "map/png/WQPNGFile.h"

#include "io/ZPAtomicFile.h"
#include "io/ZPChecksum.h"
#include "io/ZPMutableDataCursor.h"
#include "io/ZPParallel.h"
#include "io/ZPStage.h"
#include "io/ZPThreadValues.h"
#include "map/png/WQPNGBand.h"

#include <algorithm>
#include <cerrno>
#include <vector>

namespace {

constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";
/// RFC 1950, 2.2: deflate, 32 KiB window, fastest level.
constexpr std::string_view kZlibHeader = "\x78\x01";
/// RFC 1951, 3.2.6: an empty last block in fixed codes.
constexpr std::string_view kDeflateEnd("\x03\x00", 2);

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

/// A PNG chunk: u32 length, type, data, u32 CRC-32 of type and data; big endian.
ZPData chunk(std::string_view type, std::initializer_list<std::span<const std::byte>> parts) {
    std::size_t length = 0;
    for (const auto &part : parts)
        length += part.size();
    ZPMutableDataCursor cursor;
    cursor.reserve(length + 12);
    cursor.writeBigInt32(static_cast<std::uint32_t>(length));
    cursor.writeData(bytesOf(type));
    for (const auto &part : parts)
        cursor.writeData(part);
    const auto checked = std::span(cursor.data()).subspan(4);
    cursor.writeBigInt32(ZPCRC32(0, checked));
    return cursor.takeData();
}

ZPData header(const WQImage &image) {
    ZPMutableDataCursor cursor;
    cursor.writeBigInt32(static_cast<std::uint32_t>(image.width()));
    cursor.writeBigInt32(static_cast<std::uint32_t>(image.height()));
    cursor.writeByte(8);                                  // bits a sample
    cursor.writeByte(image.bytesPerPixel() == 4 ? 6 : 0); // red, green, blue, alpha or grey
    cursor.writeByte(0);                                  // deflate
    cursor.writeByte(0);                                  // the five standard filters
    cursor.writeByte(0);                                  // not interlaced
    return chunk("IHDR", {cursor.data()});
}

struct EncodedBand {
    ZPData chunk;
    std::uint32_t checksum = 0;
    std::uint64_t length = 0;
};

EncodedBand encodeBand(const WQImage &image, std::size_t index, WQPNGBand &band) {
    const std::size_t height = image.rowsPerBand();
    const std::size_t first = index * height;
    image.readRows(first, std::min(height, image.height() - first),
                   [&band](const WQRowRun &rows) { band.appendRows(rows); });
    const WQPNGBand::Deflated deflated = band.finish();
    const auto lead = index == 0 ? bytesOf(kZlibHeader) : std::span<const std::byte>();
    return {chunk("IDAT", {lead, deflated.bytes}), deflated.checksum, deflated.length};
}

} // namespace

bool WQWritePNG(const WQImage &image, const std::filesystem::path &path, ZPError *error) {
    if (image.width() > WQImage::kGreatestWidth)
        return ZPFail(error, ZPError::posix(EFBIG));
    const ZPStage stage("encode and write");
    ZPAtomicFile file(path);
    if (!file.open(error) || !file.write(bytesOf(kSignature), error) ||
        !file.write(header(image), error))
        return false;

    const std::size_t bandCount = (image.height() + image.rowsPerBand() - 1) / image.rowsPerBand();
    WQAdler32 checksum;
    std::vector<EncodedBand> encoded(bandCount);
    // A band's memory is used again by the next one of the same thread: fresh memory from the
    // system took a quarter of the time of encoding.
    ZPThreadValues<WQPNGBand> bands([&image] { return WQPNGBand(image.bytesPerPixel()); });
    const auto encode = [&](std::size_t index) {
        encoded[index] = encodeBand(image, index, bands.local());
    };
    bool isWritten = true;
    const auto write = [&](std::size_t index) {
        const EncodedBand band = std::move(encoded[index]);
        checksum.appendChecksum(band.checksum, band.length);
        const ZPStage writing("of that, write");
        isWritten = file.write(band.chunk, error);
        return isWritten;
    };
    ZPParallelInOrder(bandCount, encode, write);
    if (!isWritten)
        return false;

    ZPMutableDataCursor trailer;
    trailer.writeData(bytesOf(kDeflateEnd));
    trailer.writeBigInt32(checksum.value());
    return file.write(chunk("IDAT", {trailer.data()}), error) &&
           file.write(chunk("IEND", {}), error) && file.commit(error);
}
