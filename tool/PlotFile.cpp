#include "tool/PlotFile.h"

#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

namespace {

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        const std::size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return pieces;
        text.remove_prefix(end + 1);
    }
}

std::optional<std::string> readUTF8File(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad() || !ZPIsValidUTF8(text))
        return std::nullopt;
    return text;
}

std::optional<WQMapPoint> mapPointOfLine(std::string_view line) {
    const auto fields = split(line, ';');
    WQMapLocation location;
    if (fields.size() < 3 || fields[1].empty() || !WQMapCoordinateFromString(fields[1], &location))
        return std::nullopt;
    return WQMapPoint(std::string(fields[0]), location, std::string(fields[2]));
}

} // namespace

std::vector<WQMapPoint> readPlotFile(const std::filesystem::path &path) {
    const auto text = readUTF8File(path);
    const auto lines = text ? split(*text, '\n') : std::vector<std::string_view>();
    std::vector<WQMapPoint> points;
    for (const std::string_view line : lines)
        if (auto point = mapPointOfLine(line))
            points.push_back(std::move(*point));
    ZPLog("Found %zu lines in %s", lines.size(), path.c_str());
    ZPLog("Found %zu coordinates", points.size());
    return points;
}
