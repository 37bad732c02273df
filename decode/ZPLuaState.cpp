#include "decode/ZPLuaState.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <new>
#include <string_view>

namespace {

constexpr std::size_t kMostMemory = std::size_t{32} << 20;
constexpr std::uint64_t kScriptInstructions = 10'000'000;
constexpr int kInstructionsPerCount = 100;
/// Many times what the instructions of a call take that works on little memory.
constexpr std::chrono::seconds kMostTime{5};
/// A decoder is a page of text.
constexpr std::size_t kMostScriptSize = 1 << 20;

constexpr const char *kBaseFunctions[] = {"assert", "error",  "ipairs",   "next",     "pairs",
                                          "select", "rawlen", "tonumber", "tostring", "type"};
// No patterns and no `rep`: both can be made to run for years within one instruction.
constexpr const char *kStringFunctions[] = {"byte",  "char",    "format", "len",
                                            "lower", "reverse", "sub",    "upper"};
// No `insert`, `remove` and `move`: they run over as many places as their arguments claim.
constexpr const char *kTableFunctions[] = {"concat", "pack", "sort", "unpack"};
constexpr const char *kMathFunctions[] = {"abs", "ceil",       "floor",     "fmod",       "huge",
                                          "max", "maxinteger", "min",       "mininteger", "modf",
                                          "pi",  "sqrt",       "tointeger", "type",       "ult"};

/// Empties the table on top of the stack but for what is listed.
template <std::size_t Count>
void keepOnly(lua_State *state, const char *const (&names)[Count]) {
    lua_pushnil(state);
    while (lua_next(state, -2) != 0) {
        lua_pop(state, 1);
        const std::string_view key = lua_tostring(state, -1);
        if (std::ranges::find(names, key) != std::end(names))
            continue;
        lua_pushvalue(state, -1);
        lua_pushnil(state);
        lua_rawset(state, -4); // allowed while the table is walked
    }
}

std::string messageOnStack(lua_State *state) {
    // Not luaL_tolstring, which would run what a script put into its error.
    const char *text = lua_type(state, -1) == LUA_TSTRING ? lua_tostring(state, -1) : nullptr;
    std::string message = text != nullptr ? text : "an error that is no text";
    lua_pop(state, 1);
    return message;
}

} // namespace

ZPLuaState::ZPLuaState() : _state(lua_newstate(&allocate, this), &lua_close) {
    if (_state == nullptr)
        throw std::bad_alloc();
    *static_cast<ZPLuaState **>(lua_getextraspace(get())) = this;
    lua_pushcfunction(get(), [](lua_State *state) {
        (*static_cast<ZPLuaState **>(lua_getextraspace(state)))->openLibraries();
        return 0;
    });
    std::string message;
    if (!call(0, 0, kScriptInstructions, message))
        throw std::bad_alloc();
}

void ZPLuaState::openLibraries() {
    lua_State *state = get();
    luaL_requiref(state, LUA_GNAME, luaopen_base, 1);
    keepOnly(state, kBaseFunctions);
    luaL_requiref(state, LUA_STRLIBNAME, luaopen_string, 1);
    keepOnly(state, kStringFunctions);
    luaL_requiref(state, LUA_TABLIBNAME, luaopen_table, 1);
    keepOnly(state, kTableFunctions);
    luaL_requiref(state, LUA_MATHLIBNAME, luaopen_math, 1);
    keepOnly(state, kMathFunctions);
    lua_settop(state, 0);
}

void *ZPLuaState::allocate(void *self, void *block, std::size_t oldSize, std::size_t newSize) {
    auto &state = *static_cast<ZPLuaState *>(self);
    // Without a block, the old size is the kind of what is to be made.
    const std::size_t released = block != nullptr ? oldSize : 0;
    if (newSize == 0) {
        std::free(block);
        state._memoryUsed -= released;
        return nullptr;
    }
    if (newSize > kMostMemory - (state._memoryUsed - released))
        return nullptr;
    void *moved = std::realloc(block, newSize);
    if (moved != nullptr)
        state._memoryUsed += newSize - released;
    return moved;
}

void ZPLuaState::countInstructions(lua_State *state, lua_Debug *) {
    auto &self = **static_cast<ZPLuaState **>(lua_getextraspace(state));
    if (self._instructionsLeft <= kInstructionsPerCount ||
        std::chrono::steady_clock::now() > self._deadline)
        luaL_error(state, "takes too long");
    self._instructionsLeft -= kInstructionsPerCount;
}

bool ZPLuaState::runScript(const std::filesystem::path &path, std::string &message) {
    std::ifstream file(path, std::ios::binary);
    std::string text(kMostScriptSize + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (!file.is_open() || file.bad() || text.size() > kMostScriptSize) {
        const bool isTooLong = text.size() > kMostScriptSize;
        message = path.string();
        message += isTooLong ? ": is too long for a decoder" : ": cannot be read";
        return false;
    }
    std::string name = path.string();
    name.insert(name.begin(), '@'); // tells Lua that it is a file's
    if (luaL_loadbufferx(get(), text.data(), text.size(), name.c_str(), "t") != LUA_OK) {
        message = messageOnStack(get());
        return false;
    }
    return call(0, 1, kScriptInstructions, message);
}

bool ZPLuaState::call(int argumentCount, int resultCount, std::uint64_t mostInstructions,
                      std::string &message) {
    _instructionsLeft = mostInstructions;
    _deadline = std::chrono::steady_clock::now() + kMostTime;
    _isOutOfMemory = false;
    lua_sethook(get(), &countInstructions, LUA_MASKCOUNT, kInstructionsPerCount);
    const int status = lua_pcall(get(), argumentCount, resultCount, 0);
    if (status == LUA_OK)
        return true;
    _isOutOfMemory = status == LUA_ERRMEM;
    message = _isOutOfMemory ? "takes too much memory" : messageOnStack(get());
    if (_isOutOfMemory)
        lua_pop(get(), 1);
    return false;
}
