#pragma once

#include "decode/ZPLua.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

/// A Lua interpreter in which a script can do nothing but compute: no files, no commands, no
/// loading of code, no coroutines and no catching of errors, with a limit to its memory, to the
/// instructions of each call and, for instructions on large amounts of memory, to its time.
///
/// What is left out, down to single functions such as `string.rep`, is left out because it runs
/// within one instruction for as long as its arguments say. C++ functions that a script
/// calls may throw: this Lua is compiled as C++ and unwinds.
class ZPLuaState {
  public:
    /// Throws std::bad_alloc when there is not enough memory.
    ZPLuaState();
    ZPLuaState(const ZPLuaState &) = delete;
    ZPLuaState &operator=(const ZPLuaState &) = delete;

    lua_State *get() const { return _state.get(); }

    /// Runs a script, as text and never as bytecode, and leaves its one result on the stack. False,
    /// with a message that names file and line, when it fails.
    [[nodiscard]] bool runScript(const std::filesystem::path &path, std::string &message);
    /// Calls the function under its arguments on the stack, for at most so many instructions.
    /// False, with the message, when it fails; `isOutOfMemory()` then says whether that was why.
    [[nodiscard]] bool call(int argumentCount, int resultCount, std::uint64_t mostInstructions,
                            std::string &message);
    bool isOutOfMemory() const { return _isOutOfMemory; }

  private:
    static void *allocate(void *self, void *block, std::size_t oldSize, std::size_t newSize);
    static void countInstructions(lua_State *state, lua_Debug *activation);
    void openLibraries();

    std::size_t _memoryUsed = 0;
    std::uint64_t _instructionsLeft = 0;
    std::chrono::steady_clock::time_point _deadline;
    bool _isOutOfMemory = false;
    std::unique_ptr<lua_State, decltype(&lua_close)> _state{nullptr, &lua_close};
};
