#include "decode/ZPLuaState.h"

#include "decode/ZPLuaLibrary.h"

#include <algorithm>
#include <new>

namespace {

constexpr ZPLuaLimits kSetUpLimits{10'000'000, std::size_t{32} << 20};
constexpr int kInstructionsPerCount = 100;
constexpr std::uint64_t kWorkPerAllocation = 4;
/// Left for an error's message when all other work is done.
constexpr std::uint64_t kWorkForMessage = 10'000;
/// For what is called within three groups or lists.
constexpr int kUsualStack = 60;
constexpr std::size_t kLeastGarbage = 256 << 10;
constexpr const char *kTakesTooLong = "takes too long";
constexpr std::size_t kMostMessage = 1000;

// One instruction can compare two strings, look up a key among thousands or copy all arguments
// there are. No count tells what it works on, so it costs as if it were the largest thing there is.
constexpr std::size_t kStringBytesPerWork = 1 << 10, kBlockBytesPerWork = 1 << 16;

std::string messageOnStack(lua_State *state) {
    // Not luaL_tolstring, which would run what a script put into its error.
    std::string message = "an error that is no text";
    if (lua_type(state, -1) == LUA_TSTRING)
        message.assign(lua_tostring(state, -1),
                       std::min<std::size_t>(lua_rawlen(state, -1), kMostMessage));
    return message;
}

} // namespace

ZPLuaState::ZPLuaState() {
    _heap.setMostUsed(kSetUpLimits.memory);
    _workLeft = kSetUpLimits.work;
    _state = lua_newstate(&allocate, this);
    if (_state == nullptr)
        throw std::bad_alloc();
    *static_cast<ZPLuaState **>(lua_getextraspace(_state)) = this;
    lua_sethook(_state, &countInstructions, LUA_MASKCOUNT, kInstructionsPerCount);
    lua_pushcfunction(_state, &ZPLuaOpenLibrary);
    std::string message;
    if (!call(0, 0, kSetUpLimits, message))
        throw std::bad_alloc();
}

void ZPLuaState::keep() {
    // What a record leaves behind is thrown away as a whole, so that few ever need a collection,
    // which changes all that there is: it is begun in `collect` alone.
    lua_gc(_state, LUA_GCCOLLECT);
    lua_gc(_state, LUA_GCSTOP);
    // Growing with each record would cost more than copying the larger one.
    if (!lua_checkstack(_state, kUsualStack))
        throw std::bad_alloc();
    _heap.keep();
    _keptLongestString = _longestString;
    _keptLargestBlock = _largestBlock;
}

void ZPLuaState::collect() {
    lua_gc(_state, LUA_GCCOLLECT);
    _heap.noteCollection();
    _collectsFrom = _heap.used() + std::max(_heap.used(), kLeastGarbage);
}

void ZPLuaState::fail(lua_State *state) {
    of(state)._workLeft = kWorkForMessage;
    luaL_error(state, "%s", kTakesTooLong);
}

void ZPLuaState::payForStrings(lua_State *state, int first, int last) {
    std::uint64_t byteCount = 0;
    last = std::min(last, lua_gettop(state));
    for (int argument = first; argument <= last; ++argument)
        if (lua_type(state, argument) == LUA_TSTRING)
            byteCount += lua_rawlen(state, argument);
    pay(state, workForBytes(byteCount));
}

void *ZPLuaState::allocate(void *self, void *block, std::size_t oldSize, std::size_t newSize) {
    auto &state = *static_cast<ZPLuaState *>(self);
    // Without a block, the old size is the kind of what is to be made.
    const std::size_t kind = block == nullptr ? oldSize : 0;
    const bool isString = kind == LUA_TSTRING;
    // The functions of ours and of Lua's never write to what they have as upvalues.
    const bool isFixed = isString || kind == LUA_TFUNCTION;
    if (block == nullptr)
        oldSize = 0;
    const std::uint64_t work = newSize > oldSize ? kWorkPerAllocation + workForBytes(newSize) : 0;
    if (work > state._workLeft) {
        state._isOutOfWork = true;
        state._heap.noteCollection(); // which Lua tries before it gives up, here and below
        return nullptr;
    }
    void *moved = state._heap.allocate(block, oldSize, newSize, isFixed);
    if (moved != nullptr || newSize == 0) {
        state.spend(work);
    } else {
        state._heap.noteCollection();
        state.spend(workForBytes(state._heap.used()));
    }
    if (work > 0) {
        std::size_t &largest = isString ? state._longestString : state._largestBlock;
        largest = std::max(largest, newSize);
    }
    return moved;
}

void ZPLuaState::countInstructions(lua_State *state, lua_Debug *) {
    const ZPLuaState &self = of(state);
    pay(state, kInstructionsPerCount * (1 + self._longestString / kStringBytesPerWork +
                                        self._largestBlock / kBlockBytesPerWork));
}

void ZPLuaState::allow(const ZPLuaLimits &limits) {
    _workLeft = limits.work;
    _isOutOfWork = false;
    _longestString = _keptLongestString;
    _largestBlock = _keptLargestBlock;
    _collectsFrom = _heap.kept() + kLeastGarbage;
    _heap.setMostUsed(_heap.kept() + limits.memory);
}

/// Takes the message from the stack where something is wrong.
bool ZPLuaState::isFine(int status, std::string &message) {
    if (status == LUA_OK)
        return true;
    // An exception that is not Lua's own, from one of our functions, which have no others.
    if (status < 0)
        throw std::bad_alloc();
    if (status != LUA_ERRMEM)
        message = messageOnStack(_state);
    else if (_isOutOfWork)
        message = kTakesTooLong;
    else if (_heap.refusal() == ZPLuaHeap::Refusal::limit)
        message = "takes too much memory";
    else
        throw std::bad_alloc();
    lua_pop(_state, 1);
    return false;
}

bool ZPLuaState::runScript(std::string_view script, const std::string &name, std::string &message) {
    const std::string fileName = "@" + name; // tells Lua that it is a file's
    allow(kSetUpLimits);
    return isFine(luaL_loadbufferx(_state, script.data(), script.size(), fileName.c_str(), "t"),
                  message) &&
           isFine(lua_pcall(_state, 0, 1, 0), message);
}

bool ZPLuaState::call(int argumentCount, int resultCount, const ZPLuaLimits &limits,
                      std::string &message) {
    allow(limits);
    return isFine(lua_pcall(_state, argumentCount, resultCount, 0), message);
}
