#include "game/WQMapCoordinate.h"

#include "game/WQIdentifier.h"
#include "io/ZPFloatText.h"
#include "io/ZPPointText.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

namespace {

constexpr std::string_view kDigits = "0123456789";

/// Takes items off the front of a text; every item may have white space before it. What was not
/// there leaves the text as it is.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : _rest(text) {}

    /// Sign, digits with an optional point, exponent. A number too great for single precision is
    /// infinite, one too small 0. Words such as "nan" are no numbers.
    std::optional<float> scanFloat();
    /// The longest run of these characters.
    std::string_view scanRun(std::string_view characters) {
        skipWhiteSpace();
        return take(lengthOfRun(0, characters));
    }
    void skipOptional(char character) {
        skipWhiteSpace();
        if (_rest.starts_with(character))
            take(1);
    }

  private:
    void skipWhiteSpace() { take(lengthOfRun(0, " \t\n\v\f\r")); }

    std::size_t lengthOfRun(std::size_t start, std::string_view characters) const {
        const std::size_t end = _rest.find_first_not_of(characters, start);
        return (end == _rest.npos ? _rest.size() : end) - start;
    }

    bool hasSignAt(std::size_t index) const {
        return index < _rest.size() && (_rest[index] == '+' || _rest[index] == '-');
    }

    std::string_view take(std::size_t length) {
        const std::string_view item = _rest.substr(0, length);
        _rest.remove_prefix(length);
        return item;
    }

    std::string_view _rest;
};

/// What stands for an unsigned decimal that single precision cannot hold.
float outOfRangeValue(std::string_view mantissa, std::string_view exponent) {
    const bool isNegative = exponent.starts_with('-');
    if (exponent.starts_with('+') || exponent.starts_with('-'))
        exponent.remove_prefix(1);
    // No text is long enough to make up for an exponent of this size.
    constexpr std::int64_t kLimit = std::numeric_limits<std::int64_t>::max() / 4;
    std::int64_t power = kLimit;
    std::from_chars(exponent.data(), exponent.data() + exponent.size(), power);
    power = exponent.empty() ? 0 : std::min(power, kLimit);
    if (isNegative)
        power = -power;

    // The place of the first digit that counts, from the point.
    const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<std::int64_t>(mantissa.find_first_not_of("0."));
    const bool isHuge = point - first + power > 0;
    return isHuge ? std::numeric_limits<float>::infinity() : 0.0f;
}

std::optional<float> Scanner::scanFloat() {
    skipWhiteSpace();
    const bool isSigned = hasSignAt(0);
    const std::size_t start = isSigned ? 1 : 0;

    std::size_t end = start + lengthOfRun(start, kDigits);
    std::size_t digitCount = end - start;
    if (end < _rest.size() && _rest[end] == '.') {
        const std::size_t fraction = lengthOfRun(end + 1, kDigits);
        digitCount += fraction;
        end += 1 + fraction;
    }
    if (digitCount == 0)
        return std::nullopt;
    const std::string_view mantissa = _rest.substr(start, end - start);

    // An E without digits is the letter of the east, not an exponent.
    std::string_view exponent;
    if (end < _rest.size() && (_rest[end] == 'e' || _rest[end] == 'E')) {
        const std::size_t exponentStart = end + 1;
        const std::size_t signLength = hasSignAt(exponentStart) ? 1 : 0;
        const std::size_t length = lengthOfRun(exponentStart + signLength, kDigits);
        if (length > 0) {
            exponent = _rest.substr(exponentStart, signLength + length);
            end = exponentStart + signLength + length;
        }
    }

    const bool isNegative = isSigned && _rest.front() == '-';
    const std::string_view number = take(end).substr(start);
    float value = 0;
    if (!ZPFloatFromText(number, value))
        value = outOfRangeValue(mantissa, exponent);
    return isNegative ? -value : value;
}

/// Null, or what is missing where the text does not parse; `location` then holds what came before.
const char *scanLocation(std::string_view text, WQMapLocation &location) {
    Scanner scanner(text);

    const auto northSouth = scanner.scanFloat();
    if (!northSouth)
        return "float: North/South";
    location.y = *northSouth;
    const std::string_view northSouthLetter = scanner.scanRun("nNsS");
    if (northSouthLetter.empty())
        return "north/south part of";
    // Longer runs, such as "SS", do not make a southern value.
    if (northSouthLetter == "s" || northSouthLetter == "S")
        location.y = -location.y;

    scanner.skipOptional(',');

    const auto eastWest = scanner.scanFloat();
    if (!eastWest)
        return "float: East/West";
    location.x = *eastWest;
    const std::string_view eastWestLetter = scanner.scanRun("eEwW");
    if (eastWestLetter.empty())
        return "east/west part of";
    if (eastWestLetter == "w" || eastWestLetter == "W")
        location.x = -location.x;
    return nullptr;
}

} // namespace

bool WQScanMapCoordinate(std::string_view text, WQMapLocation &location) {
    location = {};
    return scanLocation(text, location) == nullptr;
}

bool WQMapCoordinateFromString(std::string_view text, WQMapLocation *outPoint) {
    WQMapLocation location;
    const char *missing = scanLocation(text, location);
    const bool success = missing == nullptr;
    if (!success) {
        const std::string shown = ZPEscapedText(text, "\\");
        ZPLog("Failed to scan %s map coordinate: '%s'", missing, shown.c_str());
        ZPLog("%s => %s", shown.c_str(), ZPStringFromPoint(location.x, location.y).c_str());
    }
    if (outPoint != nullptr)
        *outPoint = location;
    return success;
}

static std::string stringWithDecimals(WQMapLocation location, int decimals) {
    return ZPFormat("%5.*f%s %5.*f%s", decimals, std::fabs(location.y), location.y < 0 ? "S" : "N",
                    decimals, std::fabs(location.x), location.x < 0 ? "W" : "E");
}

std::string WQStringFromMapCoordinate(WQMapLocation location) {
    return stringWithDecimals(location, 1);
}

std::string WQPreciseStringFromMapCoordinate(WQMapLocation location) {
    return stringWithDecimals(location, 5);
}

WQMapLocation WQMapCoordinateForCellID(std::uint32_t cellID) {
    constexpr double kBlockWidth = 0.8, kCellWidth = 0.1;
    constexpr int kCellsPerSide = 8;
    const std::uint16_t block = WQLandBlockNumberOfIdentifier(cellID);
    WQMapLocation location{WQColumnOfLandBlock(block) * kBlockWidth - kWQMapEdge,
                           WQRowOfLandBlock(block) * kBlockWidth - kWQMapEdge};
    const int place = WQCellOfIdentifier(cellID) - 1;
    if (place >= 0 && place < kCellsPerSide * kCellsPerSide) {
        location.x += place / kCellsPerSide * kCellWidth;
        location.y += place % kCellsPerSide * kCellWidth;
    }
    return location;
}
