#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

/// A collection of features in the coordinates of the game's map. They are no longitudes and
/// latitudes, and the collection says so.
class GeoJSONWriter {
  public:
    using Position = std::pair<double, double>;

    GeoJSONWriter();
    ~GeoJSONWriter();

    // A feature begins with its geometry, followed by its properties.
    void beginPoint(Position position);
    /// At least two positions.
    void beginLine(const std::vector<Position> &positions);
    /// One ring, against the clock; the last position is the first.
    void beginPolygon(const std::vector<Position> &ring);
    void property(std::string_view name, std::string_view text);
    void property(std::string_view name, std::int64_t number);
    void property(std::string_view name, bool value);
    void endFeature();

    /// Whole or not at all. Throws CommandFailure when it cannot be written.
    void writeToPath(const std::filesystem::path &path);

  private:
    struct Document;
    void beginFeature(std::string_view geometryType);
    void beginProperties();
    void position(Position position);

    std::unique_ptr<Document> _document;
};
