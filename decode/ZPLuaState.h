#pragma once

#include "decode/ZPLua.h"
#include "decode/ZPLuaHeap.h"

#include <string>
#include <string_view>

/// What a call into Lua may cost. Work is counted, never timed, so that a script comes equally far
/// on any machine, however busy it is: one for an instruction, and something for all that grows
/// with the size of what it works on.
struct ZPLuaLimits {
    std::uint64_t work;
    /// In bytes, beside what was kept.
    std::size_t memory;
};

/// A Lua interpreter in which a script can do nothing but compute: no files, no commands, no
/// loading of code, no coroutines and no catching of errors, within limits to its memory and work.
/// C++ functions that a script calls may throw: this Lua is compiled as C++ and unwinds.
class ZPLuaState {
  public:
    /// Throws std::bad_alloc when there is not enough memory.
    ZPLuaState();
    ZPLuaState(const ZPLuaState &) = delete;
    ZPLuaState &operator=(const ZPLuaState &) = delete;

    lua_State *get() const { return _state; }
    static ZPLuaState &of(lua_State *state) {
        return **static_cast<ZPLuaState **>(lua_getextraspace(state));
    }

    /// Runs a script, as text and never as bytecode, and leaves its one result on the stack. False,
    /// with a message that has `name` and the line, when it fails.
    [[nodiscard]] bool runScript(std::string_view script, const std::string &name,
                                 std::string &message);
    /// Calls the function under its arguments on the stack. False, with the message, when the
    /// script fails. Throws std::bad_alloc where the machine has no memory left, which is no fault
    /// of the script.
    [[nodiscard]] bool call(int argumentCount, int resultCount, const ZPLuaLimits &limits,
                            std::string &message);

    /// From now on `restore` leads back to how everything is now.
    void keep();
    void restore() { _heap.restore(); }

    /// Counts work of a C++ function before it is done; what goes beyond the limit ends the call.
    /// May collect garbage.
    static void pay(lua_State *state, std::uint64_t work) {
        ZPLuaState &self = of(state);
        if (!self.spend(work)) [[unlikely]]
            fail(state);
        if (self._heap.used() > self._collectsFrom) [[unlikely]]
            self.collect();
    }
    /// The same, for the strings among the arguments from one place to another.
    static void payForStrings(lua_State *state, int first, int last);
    /// The same, for an argument that is to be a number: it may also be a string that reads as one.
    static void payForNumber(lua_State *state, int argument) {
        if (lua_type(state, argument) != LUA_TNUMBER) [[unlikely]]
            payForStrings(state, argument, argument);
    }
    static constexpr std::uint64_t workForBytes(std::uint64_t byteCount) { return byteCount / 32; }

    /// See ZPLuaHeap; 0 for what does not lie in the interpreter's memory.
    std::uint64_t placeOf(const void *object) const { return _heap.placeOf(object); }

  private:
    static void *allocate(void *self, void *block, std::size_t oldSize, std::size_t newSize);
    static void countInstructions(lua_State *state, lua_Debug *activation);
    bool spend(std::uint64_t work) {
        const bool suffices = work <= _workLeft;
        _workLeft = suffices ? _workLeft - work : 0;
        return suffices;
    }
    static void fail(lua_State *state);
    void collect();
    void allow(const ZPLuaLimits &limits);
    bool isFine(int status, std::string &message);

    ZPLuaHeap _heap;
    std::uint64_t _workLeft = 0;
    /// How much memory may be in use before garbage is collected.
    std::size_t _collectsFrom = 0;
    bool _isOutOfWork = false;
    /// Of the blocks there were so far, in bytes.
    std::size_t _longestString = 0, _largestBlock = 0;
    std::size_t _keptLongestString = 0, _keptLargestBlock = 0;
    /// Never closed: all that it has lies in the heap.
    lua_State *_state = nullptr;
};
