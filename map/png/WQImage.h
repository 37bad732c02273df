#pragma once

#include <cstddef>
#include <functional>
#include <span>

/// A part of a row: pixels, each of which stands for so many columns.
struct WQRowSegment {
    /// As they lie in the file, of so many bytes each as the image says.
    std::span<const std::byte> pixels;
    std::size_t columnsPerPixel = 1;

    /// Of all the columns.
    std::size_t byteCount() const { return pixels.size() * columnsPerPixel; }
};

/// Equal rows of a picture, given once: the parts of one row from west to east, and how many rows
/// look like this.
struct WQRowRun {
    std::span<const WQRowSegment> segments;
    std::size_t rowCount = 1;
};

/// A picture as a source of rows, row 0 at the north edge. It is never held whole: at scale 8 that
/// would be a gigabyte.
class WQImage {
  public:
    /// Takes rows, whose pixels stay valid during the call.
    using RowSink = std::function<void(const WQRowRun &rows)>;

    virtual ~WQImage() = default;

    // In pixels. The encoder counts columns in 16 bits: an image is at most kGreatestWidth wide.
    static constexpr std::size_t kGreatestWidth = 65535;
    virtual std::size_t width() const = 0;
    virtual std::size_t height() const = 0;
    /// 1: grey level. 4: red, green, blue, alpha, which is not premultiplied.
    virtual std::size_t bytesPerPixel() const = 0;
    std::size_t bytesPerRow() const { return width() * bytesPerPixel(); }

    /// How many rows are best handed over together.
    virtual std::size_t rowsPerBand() const = 0;
    /// Hands over some rows, which there must be, from north to south. Safe from several threads at
    /// once.
    virtual void readRows(std::size_t first, std::size_t count, const RowSink &sink) const = 0;
};
