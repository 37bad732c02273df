#include "data_tool/GeoJSON.h"

#include "data_tool/Failure.h"
#include "io/ZPAtomicFile.h"
#include "io/ZPText.h"

#include <charconv>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

struct GeoJSONWriter::Document {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};

    void key(std::string_view name) {
        writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
    }
    void text(std::string_view value) {
        writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    }
};

GeoJSONWriter::GeoJSONWriter() : _document(std::make_unique<Document>()) {
    auto &writer = _document->writer;
    writer.StartObject();
    _document->key("type");
    _document->text("FeatureCollection");
    // Without it, readers take positions for places on the earth. It is the system that they make
    // of a GeoTIFF of ours.
    _document->key("crs");
    writer.StartObject();
    _document->key("type");
    _document->text("name");
    _document->key("properties");
    writer.StartObject();
    _document->key("name");
    _document->text("LOCAL_CS[\"Map coordinates\",UNIT[\"unknown\",1]]");
    writer.EndObject();
    writer.EndObject();
    _document->key("features");
    writer.StartArray();
}

GeoJSONWriter::~GeoJSONWriter() = default;

void GeoJSONWriter::position(Position position) {
    auto &writer = _document->writer;
    writer.StartArray();
    for (const double coordinate : {position.first, position.second}) {
        // Land points lie a tenth of a unit apart; what follows is the noise of arithmetic.
        constexpr int kDecimals = 5;
        char digits[32];
        const char *end =
            std::to_chars(digits, std::end(digits), coordinate, std::chars_format::fixed, kDecimals)
                .ptr;
        while (end[-1] == '0' && end[-2] != '.')
            --end;
        writer.RawValue(digits, static_cast<std::size_t>(end - digits), rapidjson::kNumberType);
    }
    writer.EndArray();
}

void GeoJSONWriter::beginFeature(std::string_view geometryType) {
    auto &writer = _document->writer;
    writer.StartObject();
    _document->key("type");
    _document->text("Feature");
    _document->key("geometry");
    writer.StartObject();
    _document->key("type");
    _document->text(geometryType);
    _document->key("coordinates");
}

void GeoJSONWriter::beginProperties() {
    _document->writer.EndObject();
    _document->key("properties");
    _document->writer.StartObject();
}

void GeoJSONWriter::beginPoint(Position place) {
    beginFeature("Point");
    position(place);
    beginProperties();
}

void GeoJSONWriter::beginLine(const std::vector<Position> &positions) {
    beginFeature("LineString");
    _document->writer.StartArray();
    for (const Position &place : positions)
        position(place);
    _document->writer.EndArray();
    beginProperties();
}

void GeoJSONWriter::beginPolygon(const std::vector<Position> &ring) {
    beginFeature("Polygon");
    _document->writer.StartArray();
    _document->writer.StartArray();
    for (const Position &place : ring)
        position(place);
    _document->writer.EndArray();
    _document->writer.EndArray();
    beginProperties();
}

void GeoJSONWriter::property(std::string_view name, std::string_view text) {
    _document->key(name);
    _document->text(text);
}

void GeoJSONWriter::property(std::string_view name, std::int64_t number) {
    _document->key(name);
    _document->writer.Int64(number);
}

void GeoJSONWriter::property(std::string_view name, bool value) {
    _document->key(name);
    _document->writer.Bool(value);
}

void GeoJSONWriter::endFeature() {
    _document->writer.EndObject();
    _document->writer.EndObject();
}

void GeoJSONWriter::writeToPath(const std::filesystem::path &path) {
    _document->writer.EndArray();
    _document->writer.EndObject();
    const auto &buffer = _document->buffer;
    ZPError error;
    const std::string text = ZPPrintableJSON({buffer.GetString(), buffer.GetSize()});
    if (!ZPWriteTextToPath(text, path, &error))
        throw CommandFailure(path.string() + ": " + error.failureReason());
}
