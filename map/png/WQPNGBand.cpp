#include "map/png/WQPNGBand.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

// A map has few colours, which are found again as they are, so rows are not filtered. Only a row
// that is much like the one above is, with Up, which makes zeros of what is the same.
constexpr unsigned kFilterNone = 0;
constexpr unsigned kFilterUp = 2;

std::size_t byteCount(std::span<const WQRowSegment> row) {
    return std::transform_reduce(row.begin(), row.end(), std::size_t{0}, std::plus(),
                                 [](const WQRowSegment &segment) { return segment.byteCount(); });
}

bool haveSameShape(const WQRowSegment &left, const WQRowSegment &right) {
    return left.columnsPerPixel == right.columnsPerPixel &&
           left.pixels.size() == right.pixels.size();
}

bool areEqual(const WQRowSegment &left, const WQRowSegment &right) {
    return std::memcmp(left.pixels.data(), right.pixels.data(), left.pixels.size()) == 0;
}

} // namespace

void WQPNGBand::appendRows(const WQRowRun &rows) {
    const std::size_t bytesPerRow = byteCount(rows.segments);
    const std::size_t equalBytes = bytesEqualToLastRow(rows.segments);
    std::size_t repeats = rows.rowCount;
    if (equalBytes < bytesPerRow) {
        if (equalBytes > bytesPerRow / 2)
            appendFilteredRow(kFilterUp, differencesToLastRow(rows.segments));
        else
            appendFilteredRow(kFilterNone, rows.segments);
        rememberRow(rows.segments);
        --repeats;
    }
    const WQRowSegment same = zeros(bytesPerRow);
    for (; repeats > 0; --repeats)
        appendFilteredRow(kFilterUp, {&same, 1});
}

WQPNGBand::Deflated WQPNGBand::finish() {
    Deflated deflated = {_block.finish(), _checksum.value(), _length};
    _matcher->restart();
    _checksum = {};
    _length = 0;
    _lastRow.clear();
    return deflated;
}

/// How many bytes of a row lie in segments that are equal to those of the last row.
std::size_t WQPNGBand::bytesEqualToLastRow(std::span<const WQRowSegment> row) const {
    if (!std::ranges::equal(_lastRow, row, haveSameShape))
        return 0;
    std::size_t count = 0;
    for (std::size_t index = 0; index < row.size(); ++index)
        if (areEqual(_lastRow[index], row[index]))
            count += row[index].byteCount();
    return count;
}

/// A row of the last one's shape under the Up filter: zeros where a segment is the same.
WQPNGBand::Segments WQPNGBand::differencesToLastRow(std::span<const WQRowSegment> row) {
    Segments segments;
    _differences.resize(_lastPixels.size());
    std::span<std::byte> rest(_differences);
    for (std::size_t index = 0; index < row.size(); ++index) {
        const WQRowSegment &last = _lastRow[index];
        const auto differences = rest.first(last.pixels.size());
        rest = rest.subspan(last.pixels.size());
        if (areEqual(last, row[index])) {
            segments.push_back(zeros(last.byteCount()));
            continue;
        }
        std::ranges::transform(row[index].pixels, last.pixels, differences.begin(),
                               [](std::byte now, std::byte before) {
                                   return static_cast<std::byte>(std::to_integer<unsigned>(now) -
                                                                 std::to_integer<unsigned>(before));
                               });
        segments.push_back({differences, last.columnsPerPixel});
    }
    return segments;
}

void WQPNGBand::rememberRow(std::span<const WQRowSegment> row) {
    _lastPixels.clear();
    for (const WQRowSegment &segment : row)
        _lastPixels.insert(_lastPixels.end(), segment.pixels.begin(), segment.pixels.end());
    _lastRow.assign(row.begin(), row.end());
    std::span<const std::byte> rest(_lastPixels);
    for (WQRowSegment &segment : _lastRow) {
        const std::size_t length = segment.pixels.size();
        segment.pixels = rest.first(length);
        rest = rest.subspan(length);
    }
}

/// One pixel that stands for all these columns.
WQRowSegment WQPNGBand::zeros(std::size_t byteCount) const {
    static constexpr std::byte kZeros[4] = {};
    return {std::span(kZeros).first(_bytesPerPixel), byteCount / _bytesPerPixel};
}

void WQPNGBand::appendFilteredRow(unsigned filter, std::span<const WQRowSegment> row) {
    const auto byte = static_cast<std::byte>(filter);
    _block.appendLiterals(filter, 1);
    _checksum.append({&byte, 1});
    ++_length;
    _matcher->appendRow(row, static_cast<std::uint32_t>(_length), _block);
    for (const WQRowSegment &segment : row)
        _checksum.appendRepeatedPixels(segment.pixels, _bytesPerPixel, segment.columnsPerPixel);
    _length += byteCount(row);
}
