#pragma once

// Lua compiled as C++ has the names of C on some systems and those of C++ on others; the build
// finds out which.
#ifdef PLOTTERRA_LUA_HAS_CXX_NAMES
#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>
#else
#include <lua.hpp>
#endif
