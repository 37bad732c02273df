#include "decode/ZPLuaDecoder.h"

#include "archive/ZPFileHandle.h"
#include "decode/ZPLuaBinding.h"

#include <algorithm>

namespace {

// Places on the script's stack, which stay as they are between calls.
constexpr int kCursorIndex = 1, kOutputIndex = 2, kDecodeIndex = 3;

// A value takes some twenty units of work, and a byte makes a few values at most.
constexpr std::uint64_t kWorkPerRecord = 500'000, kWorkPerByte = 1'000;
/// A table takes 16 bytes and more for each of its elements.
constexpr std::size_t kMemoryPerRecord = 4 << 20, kMemoryPerByte = 32;
/// A decoder is a page of text, and some have long tables of names.
constexpr std::size_t kMostScriptSize = 256 << 10;

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

/// A list of such names; empty where the script's table has no such list.
std::vector<std::string> plainNames(lua_State *state, const char *field) {
    std::vector<std::string> names;
    const bool isList = lua_getfield(state, 1, field) == LUA_TTABLE;
    for (lua_Integer index = 1; isList && lua_rawgeti(state, -1, index) != LUA_TNIL; ++index) {
        names.push_back(plainName(state, field));
        lua_pop(state, 1);
    }
    lua_settop(state, 1);
    return names;
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

ZPLuaDecoder::ZPLuaDecoder() : _session(std::make_unique<ZPLuaSession>()) {}
ZPLuaDecoder::~ZPLuaDecoder() = default;

void ZPLuaDecoder::rest() {
    _state.reset();
}

std::unique_ptr<ZPLuaDecoder> ZPLuaDecoder::decoderAtPath(const std::filesystem::path &path,
                                                          std::string &message) {
    // Not a stream, which would wait at a pipe.
    ZPError error;
    const auto file = ZPFileHandle::fileHandleAtPath(path, &error);
    if (file == nullptr || file->bytes().size() > kMostScriptSize) {
        message = path.string() + (file == nullptr ? ": cannot be read: " + error.failureReason()
                                                   : ": is too long for a decoder");
        return nullptr;
    }
    const std::span<const std::byte> bytes = file->bytes();
    std::unique_ptr<ZPLuaDecoder> decoder(new ZPLuaDecoder);
    decoder->_description.path = path;
    decoder->_script = std::make_shared<const std::string>(
        reinterpret_cast<const char *>(bytes.data()), bytes.size());
    return decoder->load(message) ? std::move(decoder) : nullptr;
}

std::unique_ptr<ZPLuaDecoder> ZPLuaDecoder::copy() const {
    std::unique_ptr<ZPLuaDecoder> decoder(new ZPLuaDecoder);
    decoder->_description = _description;
    decoder->_script = _script;
    return decoder;
}

std::string ZPLuaDecoder::namedMessage(const std::string &message) const {
    const std::string path = _description.path.string();
    return message.starts_with(path + ":") ? message : path + ": " + message;
}

bool ZPLuaDecoder::load(std::string &message) {
    auto loaded = std::make_unique<ZPLuaState>();
    lua_State *state = loaded->get();
    bool isLoaded = loaded->runScript(*_script, _description.path.string(), message);
    if (isLoaded) {
        // In a function of its own, which may fail as a script may.
        lua_pushlightuserdata(state, this);
        lua_pushcclosure(state, &readDescription, 1);
        lua_insert(state, 1);
        isLoaded = loaded->call(1, 3, {kWorkPerRecord, kMemoryPerRecord}, message);
    }
    if (!isLoaded) {
        message = namedMessage(message);
        return false;
    }
    loaded->keep();
    _state = std::move(loaded);
    return true;
}

/// Takes the script's table and leaves cursor, output and the function that decodes.
int ZPLuaDecoder::readDescription(lua_State *state) {
    auto &decoder = *static_cast<ZPLuaDecoder *>(lua_touserdata(state, lua_upvalueindex(1)));
    ZPLuaDecoderDescription description{decoder._description.path, {}, {}, {}, {}, {}};
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
    description.classes = plainNames(state, "classes");
    for (const std::string &key : plainNames(state, "games")) {
        description.games.push_back(ZPGorvaneGameWithKey(key));
        if (description.games.back() == ZPGorvaneGame::unknown)
            return luaL_error(state, "'games' has %s in it, which is no game", key.c_str());
    }
    if (description.games.empty())
        description.games = {ZPGorvaneGame::first};
    if (description.types.empty() && description.classes.empty())
        return luaL_error(state, "names neither 'types' nor 'classes' that it reads");

    decoder._description = std::move(description);
    ZPLuaPushCursor(state, *decoder._session);
    ZPLuaPushOutput(state, *decoder._session);
    if (lua_getfield(state, 1, "decode") != LUA_TFUNCTION)
        return luaL_error(state, "has no function 'decode'");
    return 3;
}

void ZPLuaDecoder::decode(ZPDataCursor &cursor, ZPFieldOutput &output) {
    std::string message;
    if (_state == nullptr && !load(message))
        throw ZPGenericException(message);

    const auto finish = [this](ZPLuaState *state) {
        _session->cursor = nullptr;
        _session->output = nullptr;
        state->restore();
    };
    const std::unique_ptr<ZPLuaState, decltype(finish)> used(_state.get(), finish);
    _session->cursor = &cursor;
    _session->output = &output;
    _session->numbersRead.clear();
    lua_State *state = _state->get();
    for (const int index : {kDecodeIndex, kCursorIndex, kOutputIndex})
        lua_pushvalue(state, index);
    const std::size_t size = cursor.data().size();
    if (!_state->call(
            2, 0, {kWorkPerRecord + kWorkPerByte * size, kMemoryPerRecord + kMemoryPerByte * size},
            message))
        throw ZPGenericException(namedMessage(message));
}
