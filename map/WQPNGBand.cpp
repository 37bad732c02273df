#include "map/WQPNGBand.h"

namespace {

// Rows are not filtered: a map has few colours, and they are found again as they are. Only a row
// that equals the one above is filtered, with Up, which makes it zeros.
constexpr unsigned kFilterNone = 0;
constexpr unsigned kFilterUp = 2;

} // namespace

void WQPNGBand::appendRows(const WQRowRun &rows) {
    std::size_t bytesPerRow = 0;
    for (const WQRowSegment &segment : rows.segments)
        bytesPerRow += segment.byteCount();
    if (_matcher->isLastRow(rows.segments)) {
        appendRepeats(rows.rowCount, bytesPerRow);
        return;
    }
    appendFilter(kFilterNone);
    _matcher->appendRow(rows.segments, static_cast<std::uint32_t>(_length), _block);
    for (const WQRowSegment &segment : rows.segments)
        _checksum.appendRepeatedPixels(segment.pixels, _bytesPerPixel, segment.columnsPerPixel);
    _length += bytesPerRow;
    appendRepeats(rows.rowCount - 1, bytesPerRow);
}

void WQPNGBand::appendFilter(unsigned filter) {
    const auto byte = static_cast<std::byte>(filter);
    _block.appendLiterals(filter, 1);
    _checksum.append({&byte, 1});
    ++_length;
}

/// A row of zeros is a pixel of zeros and a match for the rest.
void WQPNGBand::appendRepeats(std::size_t rowCount, std::size_t bytesPerRow) {
    for (std::size_t row = 0; row < rowCount; ++row) {
        appendFilter(kFilterUp);
        _block.appendLiterals(0, static_cast<unsigned>(_bytesPerPixel));
        _block.appendMatch(bytesPerRow - _bytesPerPixel, _bytesPerPixel);
        _checksum.appendZeros(bytesPerRow);
        _length += bytesPerRow;
    }
}
