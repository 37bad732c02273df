#include "decode/WQRecordDecoders.h"

// See WQWorldInfo for the layout.

namespace {

/// A u32 count, and as many values of one kind as it says.
template <class AddElement>
void addList(ZPDataCursor &cursor, ZPFieldOutput &output, std::string_view name,
             AddElement addElement) {
    const std::uint32_t count = cursor.readLittleInt32();
    output.list(name, [&] {
        for (std::uint32_t index = 0; index < count; ++index)
            addElement();
    });
}

template <class AddValues>
void addGroups(ZPDataCursor &cursor, ZPFieldOutput &output, std::string_view name,
               AddValues addValues) {
    addList(cursor, output, name, [&] { output.group({}, addValues); });
}

class WorldInfoReader {
  public:
    WorldInfoReader(ZPDataCursor &cursor, ZPFieldOutput &output, const WQDecodingContext &context)
        : _cursor(cursor), _output(output), _context(context) {}

    void readHeader() {
        _output.identifier(_cursor.readLittleInt32());
        hexadecimals({"unknown1", "unknown2"});
        _output.text("name", _cursor.wq_readLength16StringAndAlign(false));
        numbers({"width", "height"});
        floats({"squareLength"});
        numbers({"landblockSquareLength"});
        hexadecimals({"unknown3"});
        floats({"unknown4", "unknown5", "unknown6"});
        _output.list("actualLandHeights", [&] {
            for (unsigned index = 0; index < 256; ++index)
                floats({{}});
        });
    }

    void readCalendarAndWeather() {
        doubles({"unknown7"});
        hexadecimals({"unknown8"});
        floats({"unknown9"});
        numbers({"daysPerYear"});
        hexadecimals({"unknown10", "unknown11"});
        addGroups(_cursor, _output, "times", [&] {
            floats({"start"});
            _output.boolean("isNight", _cursor.readLittleInt32() == 1);
            text("name");
        });
        addList(_cursor, _output, "days", [&] { text({}); });
        addGroups(_cursor, _output, "months", [&] {
            numbers({"startDayOfYear"});
            text("name");
        });
        hexadecimals({"unknown12"});
        doubles({"unknown13", "unknown14"});
        addGroups(_cursor, _output, "weatherTypes", [&] { readWeatherType(); });
    }

    void readScenery() {
        addGroups(_cursor, _output, "referenceSets", [&] {
            references({"identifier"});
            addGroups(_cursor, _output, "references", [&] {
                references({"identifier"});
                floats({"f1", "f2", "f3", "f4"});
            });
        });
        addGroups(_cursor, _output, "terrainObjects", [&] {
            hexadecimals({"value"});
            addList(_cursor, _output, "identifiers", [&] { references({{}}); });
        });
        addGroups(_cursor, _output, "landTypes", [&] {
            text("name");
            _output.group("color", [&] {
                for (const char *part : {"blue", "green", "red", "alpha"})
                    _output.number(part, _cursor.readByte());
            });
            addList(_cursor, _output, "automaticTerrainObjectIndexes", [&] { numbers({{}}); });
        });
    }

    void readLandTextures() {
        hexadecimals({"u1", "u2"});
        for (const char *blend : {"blend1", "blend2", "blend3"})
            addGroups(_cursor, _output, blend, [&] { hexadecimals({"v1", "v2"}); });
        addGroups(_cursor, _output, "landTextures", [&] {
            hexadecimals({"v1", "v2", "v3", "v4", "v5", "v6", "v7", "v8", "v9", "v10", "v11"});
        });
        _output.list("trailer", [&] {
            for (unsigned index = 0; index < 6; ++index)
                hexadecimals({{}});
        });
    }

  private:
    using Names = std::initializer_list<std::string_view>;

    void readWeatherType() {
        constexpr std::uint32_t kFirstVersionWithNinthField = 1394;
        floats({"percent"});
        text("name");
        addGroups(_cursor, _output, "weatherModels", [&] {
            floats({"v1", "v2", "v3", "v4", "v5", "v6"});
            references({"modelIdentifier", "particleEffectIdentifier"});
            // The lowest bit of a data version tells variants of the same format apart.
            if ((_context.portalVersion & 0xFFFE) >= kFirstVersionWithNinthField)
                hexadecimals({"v9"});
        });
        addGroups(_cursor, _output, "weatherAnimationGroups", [&] {
            floats({"f1", "f2", "f3", "f4"});
            hexadecimals({"v1"});
            floats({"f5"});
            hexadecimals({"v2"});
            floats({"f6", "f7"});
            hexadecimals({"v3", "v4"});
            addGroups(_cursor, _output, "weatherAnimationItems", [&] {
                hexadecimals({"unknown1", "unknown2"});
                floats({"unknown3"});
                const ZPVector3 vector = _cursor.readLittleVector3();
                _output.vector("unknown4", {vector.x, vector.y, vector.z});
            });
        });
    }

    void text(std::string_view name) {
        _output.text(name, _cursor.wq_readLength16StringAndAlign(true));
    }
    void numbers(Names names) {
        for (const std::string_view name : names)
            _output.number(name, _cursor.readLittleInt32());
    }
    void hexadecimals(Names names) {
        for (const std::string_view name : names)
            _output.hexadecimal(name, _cursor.readLittleInt32());
    }
    void references(Names names) {
        for (const std::string_view name : names)
            _output.reference(name, _cursor.readLittleInt32());
    }
    void floats(Names names) {
        for (const std::string_view name : names)
            _output.float32(name, _cursor.readLittleFloat32());
    }
    void doubles(Names names) {
        for (const std::string_view name : names)
            _output.float64(name, _cursor.readLittleFloat64());
    }

    ZPDataCursor &_cursor;
    ZPFieldOutput &_output;
    const WQDecodingContext &_context;
};

} // namespace

void WQDecodeWorldInfo(ZPDataCursor &cursor, ZPFieldOutput &output,
                       const WQDecodingContext &context) {
    WorldInfoReader reader(cursor, output, context);
    reader.readHeader();
    reader.readCalendarAndWeather();
    reader.readScenery();
    reader.readLandTextures();
}
