#include "decode/ZPLuaLibrary.h"

#include "decode/ZPLuaState.h"

#include <climits>
#include <cstring>

namespace {

/// Calls the function of Lua's own that is the upvalue. It pays for its arguments and results, and
/// for the bytes of those from `First` to `Last` that are strings: a number may be given as one,
/// and a million blanks before a digit are read one by one.
template <int First, int Last>
int callPaid(lua_State *state) {
    if constexpr (First <= Last)
        ZPLuaState::payForStrings(state, First, Last);
    const int argumentCount = lua_gettop(state);
    const int resultCount = lua_tocfunction(state, lua_upvalueindex(1))(state);
    ZPLuaState::pay(state, 1 + static_cast<std::uint64_t>(argumentCount + resultCount));
    return resultCount;
}

/// A function of Lua's library that scripts may call, and through what.
struct Row {
    const char *name;
    lua_CFunction call = &callPaid<1, INT_MAX>;
};
constexpr lua_CFunction kFree = &callPaid<1, 0>, kFreeText = &callPaid<2, INT_MAX>;

constexpr Row kBaseFunctions[] = {
    {"assert", kFree},           {"error", kFree}, {"ipairs", kFree}, {"rawlen", kFree},
    {"select", &callPaid<1, 1>}, {"tonumber"},     {"type", kFree},
};
// No patterns and no `rep`: both can be made to run for years on a short string.
constexpr Row kStringFunctions[] = {
    {"byte", kFreeText}, {"char"},           {"len", kFreeText}, {"lower"},
    {"reverse"},         {"sub", kFreeText}, {"upper"}};
// No `insert`, `remove` and `move`: they run over as many places as their arguments claim.
constexpr Row kTableFunctions[] = {{"pack", kFree}, {"unpack", kFreeText}};
constexpr Row kMathFunctions[] = {{"abs"},  {"ceil"}, {"floor"}, {"fmod"}, {"max"},      {"min"},
                                  {"modf"}, {"sqrt"}, {"type"},  {"ult"},  {"tointeger"}};
constexpr const char *kMathNumbers[] = {"huge", "maxinteger", "mininteger", "pi"};
/// What makes "1" + 1 a sum.
constexpr Row kArithmetic[] = {{"__add"}, {"__sub"}, {"__mul"},  {"__mod"},
                               {"__pow"}, {"__div"}, {"__idiv"}, {"__unm"}};

void wrap(lua_State *state, const char *name, lua_CFunction function) {
    lua_getfield(state, -1, name);
    lua_pushcclosure(state, function, 1);
    lua_setfield(state, -3, name);
}

/// Puts these functions of the table on top of the stack into that below it.
template <std::size_t Count>
void addPaid(lua_State *state, const Row (&rows)[Count]) {
    for (const Row &row : rows)
        wrap(state, row.name, row.call);
}

/// Our own functions are closures as well: what a script can use as a key lies in its memory.
void addOwn(lua_State *state, const char *name, lua_CFunction function) {
    lua_pushboolean(state, true);
    lua_pushcclosure(state, function, 1);
    lua_setfield(state, -2, name);
}

/// Replaces what would be shown by its address.
void nameObject(lua_State *state, int argument) {
    switch (lua_type(state, argument)) {
    case LUA_TTABLE:
    case LUA_TFUNCTION:
    case LUA_TUSERDATA:
    case LUA_TTHREAD:
        lua_pushstring(state, luaL_typename(state, argument));
        lua_replace(state, argument);
        break;
    default: break;
    }
}

int toString(lua_State *state) {
    luaL_checkany(state, 1);
    nameObject(state, 1);
    luaL_tolstring(state, 1, nullptr);
    return 1;
}

/// Lua's own is the upvalue, here and below.
int format(lua_State *state) {
    ZPLuaState::payForStrings(state, 1, INT_MAX);
    std::size_t length;
    const char *text = luaL_checklstring(state, 1, &length);
    for (const char *at = text, *end = text + length; at < end; ++at) {
        if (*at != '%')
            continue;
        at += 1 + std::strspn(at + 1, "-+ #0123456789.");
        if (at < end && *at == 'p')
            return luaL_error(state, "invalid conversion '%%p' to 'format'");
    }
    for (int argument = 2; argument <= lua_gettop(state); ++argument)
        nameObject(state, argument);
    return lua_tocfunction(state, lua_upvalueindex(1))(state);
}

int concat(lua_State *state) {
    constexpr std::uint64_t kWorkPerElement = 4;
    ZPLuaState::payForStrings(state, 2, 4);
    luaL_checktype(state, 1, LUA_TTABLE);
    const lua_Integer first = luaL_optinteger(state, 3, 1);
    const lua_Integer last =
        luaL_optinteger(state, 4, static_cast<lua_Integer>(lua_rawlen(state, 1)));
    if (first <= last) {
        const std::uint64_t gaps =
            static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first);
        ZPLuaState::pay(state, gaps < UINT32_MAX ? (gaps + 1) * kWorkPerElement : UINT64_MAX);
    }
    return lua_tocfunction(state, lua_upvalueindex(1))(state);
}

/// A table of a library, with the library itself above it.
void openAside(lua_State *state, const char *name, lua_CFunction open) {
    lua_newtable(state);
    lua_pushcfunction(state, open);
    lua_pushstring(state, name);
    lua_call(state, 1, 1);
}

void openBase(lua_State *state) {
    // Lua puts its own into the globals; what is to stay of them is put into a table of our own,
    // which takes their place.
    openAside(state, LUA_GNAME, luaopen_base);
    addPaid(state, kBaseFunctions);
    lua_pop(state, 1);
    addOwn(state, "tostring", &toString);
    addOwn(state, "pairs", &ZPLuaPairs);
    ZPLuaPushNext(state);
    lua_setfield(state, -2, "next");
    lua_rawseti(state, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
}

void openString(lua_State *state) {
    openAside(state, LUA_STRLIBNAME, luaopen_string);
    addPaid(state, kStringFunctions);
    wrap(state, "format", &format);
    lua_pop(state, 1);
    // Through the metatable, scripts reach the library as methods of strings.
    lua_pushliteral(state, "");
    lua_getmetatable(state, -1);
    lua_newtable(state);
    lua_pushvalue(state, -2);
    addPaid(state, kArithmetic);
    lua_pop(state, 1);
    lua_pushvalue(state, -4);
    lua_setfield(state, -2, "__index");
    lua_setmetatable(state, -3);
    lua_pop(state, 2);
    lua_setglobal(state, LUA_STRLIBNAME);
}

} // namespace

int ZPLuaOpenLibrary(lua_State *state) {
    openBase(state);
    openString(state);
    openAside(state, LUA_TABLIBNAME, luaopen_table);
    addPaid(state, kTableFunctions);
    wrap(state, "concat", &concat);
    lua_pop(state, 1);
    addOwn(state, "sort", &ZPLuaSort);
    lua_setglobal(state, LUA_TABLIBNAME);
    openAside(state, LUA_MATHLIBNAME, luaopen_math);
    addPaid(state, kMathFunctions);
    for (const char *name : kMathNumbers) {
        lua_getfield(state, -1, name);
        lua_setfield(state, -3, name);
    }
    lua_pop(state, 1);
    lua_setglobal(state, LUA_MATHLIBNAME);
    return 0;
}
