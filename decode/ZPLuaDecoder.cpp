#include "decode/ZPLuaDecoder.h"

#include <algorithm>

namespace {

// Places on the script's stack, which stay as they are between calls.
constexpr int kCursorIndex = 1, kOutputIndex = 2, kDecodeIndex = 3;

/// A value takes some ten instructions, a byte makes a few values at most.
constexpr std::uint64_t kInstructionsPerRecord = 1'000'000, kInstructionsPerByte = 2'000;
/// A decoder that hangs is not tried on every record of an archive.
constexpr unsigned kMostRecordsThatTakeTooLong = 8;
constexpr std::string_view kTakesTooLong = "takes too long";

bool isPlainName(std::string_view name) {
    constexpr std::size_t kLongest = 64;
    return !name.empty() && name.size() <= kLongest && std::ranges::all_of(name, [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= 'a' && letter <= 'z') || letter == '_' || letter == '-';
    });
}

/// A name that may become part of a file's name.
std::string plainName(lua_State *state, const char *field) {
    std::string name;
    if (lua_type(state, -1) == LUA_TSTRING)
        name.assign(lua_tostring(state, -1), lua_rawlen(state, -1));
    if (!isPlainName(name))
        luaL_error(state, "'%s' is no text of letters, digits, - and _", field);
    return name;
}

} // namespace

const void *ZPLuaPushObject(lua_State *state, ZPLuaSession &session, const luaL_Reg *methods,
                            std::size_t methodCount) {
    const void *object = lua_newuserdatauv(state, 1, 0);
    lua_newtable(state); // metatable
    lua_newtable(state); // methods
    for (std::size_t index = 0; index < methodCount; ++index) {
        lua_pushlightuserdata(state, &session);
        lua_pushcclosure(state, methods[index].func, 1);
        lua_setfield(state, -2, methods[index].name);
    }
    lua_setfield(state, -2, "__index");
    lua_setmetatable(state, -2);
    return object;
}

std::unique_ptr<ZPLuaDecoder> ZPLuaDecoder::decoderAtPath(const std::filesystem::path &path,
                                                          std::string &message) {
    std::unique_ptr<ZPLuaDecoder> decoder(new ZPLuaDecoder);
    decoder->_description.path = path;
    return decoder->load(message) ? std::move(decoder) : nullptr;
}

bool ZPLuaDecoder::load(std::string &message) {
    _state = std::make_unique<ZPLuaState>();
    lua_State *state = _state->get();
    if (!_state->runScript(_description.path, message))
        return false;
    // In a function of its own, which may fail as a script may.
    lua_pushlightuserdata(state, this);
    lua_pushcclosure(state, &readDescription, 1);
    lua_insert(state, 1);
    if (_state->call(1, 3, kInstructionsPerRecord, message))
        return true;
    message = _description.path.string() + ": " + message;
    return false;
}

/// Takes the script's table and leaves cursor, output and the function that decodes.
int ZPLuaDecoder::readDescription(lua_State *state) {
    auto &decoder = *static_cast<ZPLuaDecoder *>(lua_touserdata(state, lua_upvalueindex(1)));
    ZPLuaDecoderDescription description{decoder._description.path, {}, {}, {}, {}};
    if (!lua_istable(state, 1))
        return luaL_error(state, "does not return a table");
    lua_getfield(state, 1, "name");
    description.name = plainName(state, "name");
    if (lua_getfield(state, 1, "extension") != LUA_TNIL)
        description.extension = plainName(state, "extension");

    const bool hasTypes = lua_getfield(state, 1, "types") == LUA_TTABLE;
    for (lua_Integer index = 1; hasTypes && lua_rawgeti(state, -1, index) != LUA_TNIL; ++index) {
        const lua_Integer type = lua_isinteger(state, -1) ? lua_tointeger(state, -1) : -1;
        if (type < 0 || type > 0xFF)
            return luaL_error(state, "'types' has something other than bytes in it");
        description.types.push_back(static_cast<std::uint8_t>(type));
        lua_pop(state, 1);
    }
    lua_settop(state, 1);
    const bool hasClasses = lua_getfield(state, 1, "classes") == LUA_TTABLE;
    for (lua_Integer index = 1; hasClasses && lua_rawgeti(state, -1, index) != LUA_TNIL; ++index) {
        description.classes.push_back(plainName(state, "classes"));
        lua_pop(state, 1);
    }
    lua_settop(state, 1);
    if (description.types.empty() && description.classes.empty())
        return luaL_error(state, "names neither 'types' nor 'classes' that it reads");

    decoder._description = std::move(description);
    ZPLuaPushCursor(state, decoder._session);
    ZPLuaPushOutput(state, decoder._session);
    if (lua_getfield(state, 1, "decode") != LUA_TFUNCTION)
        return luaL_error(state, "has no function 'decode'");
    return 3;
}

void ZPLuaDecoder::decode(ZPDataCursor &cursor, ZPFieldOutput &output) {
    if (_recordsThatTookTooLong >= kMostRecordsThatTakeTooLong)
        throw ZPGenericException(_description.path.string() +
                                 ": took too long too often and is not tried again");
    std::string message;
    if (_state == nullptr && !load(message))
        throw ZPGenericException(message);

    _session = {&cursor,
                &output,
                ZPLuaSession::LastRead::other,
                _session.cursorObject,
                _session.outputObject,
                std::move(_session.scratch)};
    lua_State *state = _state->get();
    for (const int index : {kDecodeIndex, kCursorIndex, kOutputIndex})
        lua_pushvalue(state, index);
    const std::uint64_t mostInstructions =
        kInstructionsPerRecord + kInstructionsPerByte * cursor.data().size();
    const bool isDecoded = _state->call(2, 0, mostInstructions, message);
    _session.cursor = nullptr;
    _session.output = nullptr;
    if (isDecoded)
        return;
    // What the script still holds would make the next records fail too.
    if (_state->isOutOfMemory())
        _state.reset();
    if (message.ends_with(kTakesTooLong))
        ++_recordsThatTookTooLong;
    throw ZPGenericException(message);
}
