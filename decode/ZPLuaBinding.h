#pragma once

#include "decode/ZPFieldOutput.h"
#include "decode/ZPLua.h"

#include <string>

/// What the functions of a script's `cursor` and `out` work on. Each function has the address of
/// this as its first upvalue, which is quicker than looking at the type of its first argument.
struct ZPLuaSession {
    // Null between two records.
    ZPDataCursor *cursor = nullptr;
    ZPFieldOutput *output = nullptr;

    /// How Lua's numbers, which do not tell, are to be shown.
    enum class LastRead { other, int64, float64 };
    LastRead lastRead = LastRead::other;

    /// The objects that the script is given, for a method called without one to be noticed.
    const void *cursorObject = nullptr;
    const void *outputObject = nullptr;
    std::string scratch;

    static ZPLuaSession &of(lua_State *state) {
        return *static_cast<ZPLuaSession *>(lua_touserdata(state, lua_upvalueindex(1)));
    }
};

/// Runs `body`, turning the exceptions of cursor and tree into errors of the script, which have its
/// file and line.
template <class Body>
int ZPLuaGuarded(lua_State *state, Body body) {
    std::string message;
    try {
        return body();
    } catch (const ZPRangeException &exception) {
        message = exception.what();
    } catch (const ZPRecordTreeOverflow &exception) {
        message = exception.what();
    }
    return luaL_error(state, "%s", message.c_str());
}

/// Pushes an object with these methods, whose metatable a script cannot get at.
const void *ZPLuaPushObject(lua_State *state, ZPLuaSession &session, const luaL_Reg *methods,
                            std::size_t methodCount);

// Each leaves the object on the stack and notes it in the session.
void ZPLuaPushCursor(lua_State *state, ZPLuaSession &session);
void ZPLuaPushOutput(lua_State *state, ZPLuaSession &session);
