// What walks and orders tables, the same way in every run.

#include "decode/ZPLuaLibrary.h"
#include "decode/ZPLuaState.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <span>
#include <string_view>

namespace {

constexpr std::uint64_t kWorkPerKey = 8, kWorkPerStep = 4;

std::string_view textAt(lua_State *state, int index) {
    std::size_t length;
    const char *text = lua_tolstring(state, index, &length);
    return {text, length};
}

int sizeHint(lua_Integer count) {
    return static_cast<int>(std::min<lua_Integer>(count, INT_MAX));
}

struct Key {
    enum class Kind : std::uint8_t { number, text, no, yes, object } kind = Kind::object;
    bool isWhole = false;
    lua_Integer whole = 0;
    /// Not whole: Lua makes whole numbers of those that are.
    lua_Number fraction = 0;
    std::string_view text;
    std::uint64_t place = 0;
    /// In the table of all keys.
    lua_Integer index = 0;

    bool operator<(const Key &other) const {
        if (kind != other.kind)
            return kind < other.kind;
        switch (kind) {
        case Kind::number: return isLess(other);
        case Kind::text: return text < other.text;
        default: return place < other.place;
        }
    }

  private:
    bool isLess(const Key &other) const {
        if (isWhole && other.isWhole)
            return whole < other.whole;
        if (isWhole)
            return isBelow(other.fraction);
        return other.isWhole ? !other.isBelow(fraction) : fraction < other.fraction;
    }
    /// A double cannot hold every whole number, so these are compared as such.
    bool isBelow(lua_Number number) const {
        constexpr lua_Number kBeyond = 0x1p63;
        if (number >= kBeyond || number < -kBeyond)
            return number > 0;
        return whole <= static_cast<lua_Integer>(std::floor(number));
    }
};

Key keyAt(lua_State *state, int position, lua_Integer index) {
    Key key;
    key.index = index;
    switch (lua_type(state, position)) {
    case LUA_TNUMBER:
        key.kind = Key::Kind::number;
        key.isWhole = lua_isinteger(state, position);
        key.whole = key.isWhole ? lua_tointeger(state, position) : 0;
        key.fraction = lua_tonumber(state, position);
        break;
    case LUA_TSTRING:
        key.kind = Key::Kind::text;
        key.text = textAt(state, position);
        break;
    case LUA_TBOOLEAN:
        key.kind = lua_toboolean(state, position) ? Key::Kind::yes : Key::Kind::no;
        break;
    default: key.place = ZPLuaState::of(state).placeOf(lua_topointer(state, position));
    }
    return key;
}

/// A userdata: how far a walk over a table has come, before the keys in their order. It is no
/// upvalue of its own, since functions stay as they are, see ZPLuaHeap.
struct Walk {
    std::size_t passed = 0, count = 0;

    static Walk &at(lua_State *state, int index) {
        return *static_cast<Walk *>(lua_touserdata(state, index));
    }
    Key *first() { return reinterpret_cast<Key *>(this + 1); }
    std::span<const Key> order() { return {first(), count}; }
};
static_assert(sizeof(Walk) % alignof(Key) == 0);

/// Pushes a table of the keys of the table that is the first argument, and a Walk over them, which
/// refers to the texts of the former.
void pushKeys(lua_State *state) {
    lua_Integer count = 0;
    std::uint64_t textWork = 0;
    for (lua_pushnil(state); lua_next(state, 1) != 0; lua_pop(state, 1)) {
        ++count;
        if (lua_type(state, -2) == LUA_TSTRING)
            textWork += ZPLuaState::workForBytes(lua_rawlen(state, -2));
    }
    const auto size = static_cast<std::size_t>(count);
    ZPLuaState::pay(state, (size * kWorkPerKey + textWork) * std::bit_width(size));
    lua_createtable(state, sizeHint(count), 0);
    const int keys = lua_gettop(state);
    auto *walk = new (lua_newuserdatauv(state, sizeof(Walk) + size * sizeof(Key), 0)) Walk;
    walk->count = size;
    Key *const order = walk->first();
    lua_Integer index = 0;
    for (lua_pushnil(state); lua_next(state, 1) != 0; lua_pop(state, 1)) {
        new (order + index) Key(keyAt(state, -2, index + 1));
        lua_pushvalue(state, -2);
        lua_rawseti(state, keys, ++index);
    }
    if (!std::is_sorted(order, order + size))
        std::sort(order, order + size);
}

/// Pushes the next key of a walk over the first argument whose value is not gone, and the value;
/// nil at the end.
int walkOn(lua_State *state, int keys, Walk &walk) {
    while (walk.passed < walk.count) {
        ZPLuaState::pay(state, kWorkPerStep);
        lua_rawgeti(state, keys, walk.order()[walk.passed++].index);
        lua_pushvalue(state, -1);
        if (lua_rawget(state, 1) != LUA_TNIL)
            return 2;
        lua_pop(state, 2);
    }
    lua_pushnil(state);
    return 1;
}

/// Its upvalues are what pushKeys pushed.
int nextOfPairs(lua_State *state) {
    luaL_checktype(state, 1, LUA_TTABLE);
    return walkOn(state, lua_upvalueindex(1), Walk::at(state, lua_upvalueindex(2)));
}

/// Its upvalue is a table of the last walk: keys, Walk and the table walked over. So a walk by
/// `next` alone, which tells no more than the last key, need not begin anew with each step.
int next(lua_State *state) {
    constexpr int kLast = lua_upvalueindex(1), kKeys = 3, kWalk = 4, kTable = 5;
    luaL_checktype(state, 1, LUA_TTABLE);
    lua_settop(state, 2);
    for (const int field : {kKeys, kWalk, kTable})
        lua_rawgeti(state, kLast, field);
    bool goesOn = false;
    if (!lua_isnil(state, 2) && lua_rawequal(state, 1, kTable)) {
        Walk &walk = Walk::at(state, kWalk);
        if (walk.passed > 0) {
            lua_rawgeti(state, kKeys, walk.order()[walk.passed - 1].index);
            goesOn = lua_rawequal(state, 2, -1);
        }
    }
    if (!goesOn) {
        lua_settop(state, 2);
        pushKeys(state);
        lua_pushvalue(state, 1);
        for (const int field : {kKeys, kWalk, kTable}) {
            lua_pushvalue(state, field);
            lua_rawseti(state, kLast, field);
        }
        if (!lua_isnil(state, 2)) {
            Walk &walk = Walk::at(state, kWalk);
            const std::span<const Key> order = walk.order();
            const auto found = std::ranges::lower_bound(order, keyAt(state, 2, 0), std::less<>());
            walk.passed = static_cast<std::size_t>(found - order.begin()) + 1;
            bool isThere = found != order.end();
            if (isThere) {
                lua_rawgeti(state, kKeys, found->index);
                isThere = lua_rawequal(state, 2, -1);
            }
            if (!isThere)
                return luaL_error(state, "the key given to 'next' is not in the table");
        }
    }
    return walkOn(state, kKeys, Walk::at(state, kWalk));
}

/// Whether the value below the top of the stack comes before the one on top, by the function that
/// is the second argument, if there is one. Takes both.
bool isBefore(lua_State *state) {
    bool result;
    ZPLuaState::pay(state, kWorkPerStep);
    if (!lua_isnil(state, 2)) {
        lua_pushvalue(state, 2);
        lua_insert(state, -3);
        lua_call(state, 2, 1);
        result = lua_toboolean(state, -1);
        lua_pop(state, 1);
        return result;
    }
    if (lua_type(state, -2) == LUA_TSTRING && lua_type(state, -1) == LUA_TSTRING) {
        const std::string_view one = textAt(state, -2), other = textAt(state, -1);
        ZPLuaState::pay(state, ZPLuaState::workForBytes(std::min(one.size(), other.size())));
        result = one < other;
    } else {
        result = lua_compare(state, -2, -1, LUA_OPLT);
    }
    lua_pop(state, 2);
    return result;
}

/// Merges two sorted stretches, [first, middle) and [middle, end) of table `from`, into table `to`.
void merge(lua_State *state, int from, int to, lua_Integer first, lua_Integer middle,
           lua_Integer end) {
    lua_Integer left = first, right = middle;
    for (lua_Integer place = first; place < end; ++place) {
        bool takesRight = left == middle;
        if (!takesRight && right < end) {
            lua_rawgeti(state, from, right);
            lua_rawgeti(state, from, left);
            takesRight = isBefore(state);
        }
        lua_rawgeti(state, from, takesRight ? right++ : left++);
        lua_rawseti(state, to, place);
    }
}

} // namespace

void ZPLuaPushNext(lua_State *state) {
    lua_newtable(state);
    lua_pushcclosure(state, &next, 1);
}

int ZPLuaPairs(lua_State *state) {
    luaL_checktype(state, 1, LUA_TTABLE);
    lua_settop(state, 1);
    pushKeys(state);
    lua_pushcclosure(state, &nextOfPairs, 2);
    lua_pushvalue(state, 1);
    return 2;
}

int ZPLuaSort(lua_State *state) {
    luaL_checktype(state, 1, LUA_TTABLE);
    lua_settop(state, 2);
    if (!lua_isnil(state, 2))
        luaL_checktype(state, 2, LUA_TFUNCTION);
    const auto count = static_cast<lua_Integer>(lua_rawlen(state, 1));
    ZPLuaState::pay(state, static_cast<std::uint64_t>(count) * kWorkPerStep);
    lua_createtable(state, sizeHint(count), 0);
    int from = 1, to = 3;
    for (lua_Integer width = 1; width < count; width *= 2) {
        for (lua_Integer first = 1; first <= count; first += 2 * width)
            merge(state, from, to, first, std::min(first + width, count + 1),
                  std::min(first + 2 * width, count + 1));
        std::swap(from, to);
    }
    for (lua_Integer place = 1; from != 1 && place <= count; ++place) {
        lua_rawgeti(state, from, place);
        lua_rawseti(state, 1, place);
    }
    return 0;
}
