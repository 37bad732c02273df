#pragma once

#include "decode/ZPFieldOutput.h"
#include "decode/ZPLuaState.h"

#include <algorithm>
#include <array>
#include <string>

/// How the last numbers were read. Lua's numbers do not tell, and only with that known have those
/// of eight bytes no sign, and floats the digits of their precision.
class ZPLuaNumbersRead {
  public:
    enum class Kind : std::uint8_t { other, int64, float32, float64 };

    void clear() { _count = 0; }
    void note(Kind kind, std::uint64_t bits) { _last[_count++ % _last.size()] = {kind, bits}; }
    /// Of a whole number or a float, by the bits that Lua has for it.
    Kind kindOf(bool isFloat, std::uint64_t bits) const {
        const std::size_t oldest = _count - std::min(_count, _last.size());
        for (std::size_t index = _count; index-- > oldest;)
            if (const Number &number = _last[index % _last.size()];
                number.bits == bits && (number.kind != Kind::int64) == isFloat)
                return number.kind;
        return Kind::other;
    }

  private:
    struct Number {
        Kind kind;
        std::uint64_t bits;
    };
    std::array<Number, 32> _last;
    std::size_t _count = 0;
};

/// What the functions of a script's `cursor` and `out` work on. Each function has the address of
/// this as its first upvalue, which is quicker than looking at the type of its first argument.
struct ZPLuaSession {
    // Null between two records.
    ZPDataCursor *cursor = nullptr;
    ZPFieldOutput *output = nullptr;
    ZPLuaNumbersRead numbersRead;

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
