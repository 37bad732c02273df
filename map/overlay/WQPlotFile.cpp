#include "map/overlay/WQPlotFile.h"

#include "io/ZPLineReader.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"
#include "map/land/WQMapGeometry.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr std::size_t kLongestLine = 1 << 20;
constexpr std::size_t kLongestFile = 1 << 30;
constexpr std::size_t kMostMarkers = 1'000'000;
constexpr std::size_t kMostComplaints = 100;

/// What was found so far in a file that is read piece by piece.
class PlotReader {
  public:
    /// Nothing, or why the file is no plot file.
    std::optional<std::string> readFile(const std::filesystem::path &path);

    std::size_t lineCount() const { return _lineCount; }
    std::vector<WQMapPoint> takePoints() { return std::move(_points); }
    void logWhatWasLeftOut() const;
    std::vector<std::string> shortcomings(const std::string &path) const;

  private:
    void addLine(std::string_view line);
    bool scanCoordinate(std::string_view text, WQMapLocation &location);

    std::size_t _lineCount = 0;
    std::vector<WQMapPoint> _points;
    std::size_t _markerCount = 0;
    std::size_t _unreadableCount = 0;
    /// Lines that are not empty and make no marker.
    std::size_t _skippedCount = 0, _firstSkippedLine = 0;
};

std::optional<std::string> PlotReader::readFile(const std::filesystem::path &path) {
    ZPInputFile file(path);
    ZPLineReader lines(file, kLongestLine, kLongestFile);
    for (std::string line; lines.next(line); addLine(line))
        if (++_lineCount; !ZPIsValidUTF8(line))
            return ZPFormat("line %zu is not UTF-8", _lineCount);
    return lines.failure().empty() ? std::nullopt : std::optional(lines.failure());
}

void PlotReader::addLine(std::string_view line) {
    if (line.empty())
        return; // of which there may be a hundred million
    const auto fields = ZPSplitText(line, ';');
    WQMapLocation location;
    if (fields.size() < 3 || fields[1].empty() || !scanCoordinate(fields[1], location)) {
        const bool isBlank = line.find_first_not_of(" \t\r") == std::string_view::npos;
        if (!isBlank && _skippedCount++ == 0)
            _firstSkippedLine = _lineCount;
        return;
    }
    if (++_markerCount <= kMostMarkers)
        _points.emplace_back(std::string(fields[0]), location, std::string(fields[2]));
}

bool PlotReader::scanCoordinate(std::string_view text, WQMapLocation &location) {
    const bool isRead = _unreadableCount < kMostComplaints
                            ? WQMapCoordinateFromString(text, &location)
                            : WQScanMapCoordinate(text, location);
    _unreadableCount += isRead ? 0 : 1;
    return isRead;
}

void PlotReader::logWhatWasLeftOut() const {
    if (_unreadableCount > kMostComplaints)
        ZPLog("... and %zu more coordinates that cannot be read",
              _unreadableCount - kMostComplaints);
    if (_markerCount > _points.size())
        ZPLog("Error: only the first %zu of %zu coordinates are marked", _points.size(),
              _markerCount);
}

std::vector<std::string> PlotReader::shortcomings(const std::string &path) const {
    std::vector<std::string> lines;
    if (_skippedCount > 0)
        lines.push_back(ZPFormat("%zu of %zu lines in %s make no place, first line %zu",
                                 _skippedCount, _lineCount, path.c_str(), _firstSkippedLine));
    if (_markerCount > _points.size())
        lines.push_back(ZPFormat("Only the first %zu of %zu places in %s are taken", _points.size(),
                                 _markerCount, path.c_str()));
    return lines;
}

} // namespace

std::vector<WQMapPoint> WQReadPlotFile(const std::filesystem::path &path,
                                       std::vector<std::string> *shortcomings) {
    PlotReader reader;
    std::vector<std::string> lost;
    if (const auto reason = reader.readFile(path)) {
        ZPLog("Error: cannot read the places of %s: %s", path.c_str(), reason->c_str());
        reader = PlotReader();
        lost.push_back(ZPFormat("The places of %s are missing: %s", path.c_str(), reason->c_str()));
    }
    std::ranges::move(reader.shortcomings(path), std::back_inserter(lost));
    if (shortcomings != nullptr)
        std::ranges::move(lost, std::back_inserter(*shortcomings));
    reader.logWhatWasLeftOut();
    const std::size_t lineCount = reader.lineCount();
    std::vector<WQMapPoint> points = reader.takePoints();
    ZPLog("Found %zu lines in %s", lineCount, path.c_str());
    ZPLog("Found %zu coordinates", points.size());
    return points;
}

std::string WQTextOfPlacesOffTheMap(const std::vector<WQMapPoint> &places) {
    const auto isOff = [](const WQMapPoint &place) {
        const auto [x, y] = WQUnscaledPointForMapLocation(place.coordinate());
        return !(x >= 0 && x <= kWQLandSize - 1 && y >= 0 && y <= kWQLandSize - 1);
    };
    const auto first = std::ranges::find_if(places, isOff);
    if (first == places.end())
        return {};
    return ZPFormat("%zu of %zu places lie off the world, first %s",
                    static_cast<std::size_t>(std::ranges::count_if(first, places.end(), isOff)),
                    places.size(), first->label().c_str());
}
