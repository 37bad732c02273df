#include "tool/PlotFile.h"

#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <array>
#include <fstream>
#include <optional>
#include <string_view>

namespace {

std::optional<std::string> readUTF8File(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    std::string text;
    // Not through stream buffer iterators, which throw when the path is that of a directory.
    std::array<char, 1 << 16> piece;
    while (file.read(piece.data(), piece.size()), file.gcount() > 0)
        text.append(piece.data(), static_cast<std::size_t>(file.gcount()));
    if (!file.is_open() || file.bad() || !ZPIsValidUTF8(text))
        return std::nullopt;
    return text;
}

std::optional<WQMapPoint> mapPointOfLine(std::string_view line) {
    const auto fields = ZPSplitText(line, ';');
    WQMapLocation location;
    if (fields.size() < 3 || fields[1].empty() || !WQMapCoordinateFromString(fields[1], &location))
        return std::nullopt;
    return WQMapPoint(std::string(fields[0]), location, std::string(fields[2]));
}

} // namespace

std::vector<WQMapPoint> readPlotFile(const std::filesystem::path &path) {
    const auto text = readUTF8File(path);
    const auto lines = text ? ZPSplitText(*text, '\n') : std::vector<std::string_view>();
    std::vector<WQMapPoint> points;
    for (const std::string_view line : lines)
        if (auto point = mapPointOfLine(line))
            points.push_back(std::move(*point));
    ZPLog("Found %zu lines in %s", lines.size(), path.c_str());
    ZPLog("Found %zu coordinates", points.size());
    return points;
}
