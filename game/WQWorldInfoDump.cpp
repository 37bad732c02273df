// The text that WQWorldInfo is saved as.

#include "game/WQWorldInfo.h"

#include "io/ZPSystemLog.h"

namespace {

void appendNumber(std::string &text, const char *name, std::uint32_t value) {
    text += ZPFormat("%21s: %08x (%u)\n", name, value, value);
}

void appendNumber(std::string &text, const char *name, double value) {
    text += ZPFormat("%21s: %f\n", name, value);
}

void appendNumber(std::string &text, const char *name, float value) {
    appendNumber(text, name, static_cast<double>(value));
}

void appendHeading(std::string &text, const char *heading) {
    text.append("\n").append(70, '-').append("\n").append(heading).append("\n");
}

void appendWeatherType(std::string &text, const WQWeatherType &weather) {
    text += ZPFormat("%f  %s\n", static_cast<double>(weather.percent), weather.name.c_str());
    for (const WQWeatherModel &model : weather.weatherModels) {
        text += ZPFormat("  model %08x, particle effect %08x:", model.modelIdentifier,
                         model.particleEffectIdentifier);
        for (const float value : {model.v1, model.v2, model.v3, model.v4, model.v5, model.v6})
            text += ZPFormat(" %f", static_cast<double>(value));
        text += model.v9 ? ZPFormat(" %08x\n", *model.v9) : "\n";
    }
    for (const WQWeatherAnimationGroup &group : weather.weatherAnimationGroups) {
        text +=
            ZPFormat("  animation %08x %08x %08x %08x:", group.v1, group.v2, group.v3, group.v4);
        for (const float value :
             {group.f1, group.f2, group.f3, group.f4, group.f5, group.f6, group.f7})
            text += ZPFormat(" %f", static_cast<double>(value));
        text += '\n';
        for (const WQWeatherAnimationItem &item : group.weatherAnimationItems)
            text += ZPFormat(
                "    %08x %08x %f (%f %f %f)\n", item.unknown1, item.unknown2,
                static_cast<double>(item.unknown3), static_cast<double>(item.unknown4.x),
                static_cast<double>(item.unknown4.y), static_cast<double>(item.unknown4.z));
    }
}

} // namespace

std::string WQWorldInfo::dumpText() const {
    std::string text = ZPFormat("identifier: %08x\nname: %s\n", identifier(), _fields.name.c_str());
    appendNumber(text, "unknown1", _fields.unknown1);
    appendNumber(text, "unknown2", _fields.unknown2);
    appendNumber(text, "width", _fields.width);
    appendNumber(text, "height", _fields.height);
    appendNumber(text, "squareLength", _fields.squareLength);
    appendNumber(text, "landblockSquareLength", _fields.landblockSquareLength);
    appendNumber(text, "unknown3", _fields.unknown3);
    appendNumber(text, "unknown4", _fields.unknown4);
    appendNumber(text, "unknown5", _fields.unknown5);
    appendNumber(text, "unknown6", _fields.unknown6);
    appendNumber(text, "unknown7", _fields.unknown7);
    appendNumber(text, "unknown8", _fields.unknown8);
    appendNumber(text, "unknown9", _fields.unknown9);
    appendNumber(text, "daysPerYear", _fields.daysPerYear);
    appendNumber(text, "unknown10", _fields.unknown10);
    appendNumber(text, "unknown11", _fields.unknown11);
    appendNumber(text, "unknown12", _fields.unknown12);
    appendNumber(text, "unknown13", _fields.unknown13);
    appendNumber(text, "unknown14", _fields.unknown14);

    appendHeading(text, "land heights");
    for (std::size_t index = 0; index < _actualLandHeights.size(); ++index)
        text += ZPFormat("%3zu: %f\n", index, static_cast<double>(_actualLandHeights[index]));
    appendHeading(text, "times of day");
    for (const WQTimeOfDay &time : times())
        text += ZPFormat("%f  %s  %s\n", static_cast<double>(time.start),
                         time.isNight ? "night" : "day", time.name.c_str());
    appendHeading(text, "days");
    for (const std::string &day : days())
        text.append(day).append("\n");
    appendHeading(text, "months");
    for (const WQMonth &month : months())
        text += ZPFormat("%3u  %s\n", month.startDayOfYear, month.name.c_str());
    appendHeading(text, "weather");
    for (const WQWeatherType &weather : weatherTypes())
        appendWeatherType(text, weather);

    appendHeading(text, "reference sets");
    text += t20RefString();
    appendHeading(text, "terrain objects");
    text += terrainObjectsString();
    appendHeading(text, "land types");
    text += landTypesString();
    appendHeading(text, "land textures");
    text += landTexturesString();
    return text;
}
