#include "archive/ZPGorvaneClientData.h"

#include "io/ZPSystemLog.h"

#include <cstdarg>
#include <map>

namespace {

using Registry = std::map<std::string, ZPGorvaneClientDataClass>;

/// Registering runs before main, in any order of the files, so the registry is made on first use.
Registry &registry() {
    static Registry classes;
    return classes;
}

} // namespace

void ZPGorvaneClientData::registerClientDataClass(const ZPGorvaneClientDataClass &clientDataClass,
                                                  ZPGorvaneGame forGorvaneGame) {
    registry().insert_or_assign(ZPGorvaneGameDisplayName(forGorvaneGame), clientDataClass);
    std::string classes;
    for (const auto &[name, registered] : registry())
        classes += ZPFormat(" \"%s\" = %s;", name.c_str(), registered.name);
    ZPLog("%s, clientDataClassesByGame: {%s }",
          "+[ZPGorvaneClientData registerClientDataClass:forGorvaneGame:]", classes.c_str());
}

const ZPGorvaneClientDataClass *
ZPGorvaneClientData::clientDataClassForGorvaneGame(ZPGorvaneGame game) {
    const auto found = registry().find(ZPGorvaneGameDisplayName(game));
    return found != registry().end() ? &found->second : nullptr;
}

void ZPGorvaneClientData::log(const char *format, ...) const {
    va_list arguments;
    va_start(arguments, format);
    ZPPrintLine(format, arguments);
    va_end(arguments);
}
