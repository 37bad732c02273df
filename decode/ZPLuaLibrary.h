#pragma once

#include "decode/ZPLua.h"

/// Opens what scripts have of Lua's library: the functions that compute. Each pays for its work
/// before it does it (see ZPLuaState::pay), gives the same in every run, in the same order, and
/// tells no address. For lua_pushcfunction.
int ZPLuaOpenLibrary(lua_State *state);

// Those of our own, see ZPLuaOrder.cpp.

/// `next` and `pairs`, in the order of the keys: numbers, strings, false and true, then objects by
/// where they lie in the heap. Lua's own order differs from run to run.
void ZPLuaPushNext(lua_State *state);
int ZPLuaPairs(lua_State *state);
/// `table.sort`, where what is equal keeps its order. Lua's own draws lots from the clock.
int ZPLuaSort(lua_State *state);
