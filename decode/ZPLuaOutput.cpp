// The `out` of a decoder in Lua: what ZPFieldOutput adds to a record's tree.

#include "decode/ZPLuaBinding.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <array>
#include <bit>
#include <optional>

namespace {

using NumberKind = ZPLuaNumbersRead::Kind;
using Kind = ZPRecordValueKind;

ZPLuaSession &sessionOf(lua_State *state) {
    ZPLuaSession &session = ZPLuaSession::of(state);
    if (lua_touserdata(state, 1) != session.outputObject)
        luaL_error(state, "call the output's functions with a colon, as in out:number(...)");
    if (session.output == nullptr)
        luaL_error(state, "the output is used outside decode");
    return session;
}

std::string_view textArgument(lua_State *state, int argument) {
    std::size_t length;
    const char *text = luaL_checklstring(state, argument, &length);
    ZPLuaState::pay(state, ZPLuaState::workForBytes(length));
    luaL_argcheck(state, ZPIsValidUTF8({text, length}), argument,
                  "is not text in UTF-8; out:bytes takes anything");
    return {text, length};
}
std::string_view nameArgument(lua_State *state) {
    constexpr std::uint64_t kWorkPerValue = 8;
    ZPLuaState::pay(state, kWorkPerValue);
    return textArgument(state, 2);
}
lua_Integer integerArgument(lua_State *state, int argument) {
    ZPLuaState::payForNumber(state, argument);
    return luaL_checkinteger(state, argument);
}
std::uint64_t wordArgument(lua_State *state, int argument) {
    return static_cast<std::uint64_t>(integerArgument(state, argument));
}
double numberArgument(lua_State *state, int argument) {
    ZPLuaState::payForNumber(state, argument);
    return luaL_checknumber(state, argument);
}

/// The name of a number in a table of names, which stays on the stack for as long as it is used;
/// none where it has none there.
std::optional<std::string_view> nameOfNumber(lua_State *state, int table, lua_Integer number) {
    if (lua_rawgeti(state, table, number) != LUA_TSTRING)
        return std::nullopt;
    return textArgument(state, -1);
}

/// The name of a number in a table of names, "?" if it has none there; nothing without a table.
std::string_view choiceArgument(lua_State *state, int argument, lua_Integer number) {
    if (lua_isnoneornil(state, argument))
        return {};
    luaL_checktype(state, argument, LUA_TTABLE);
    return nameOfNumber(state, argument, number).value_or("?");
}

int number(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    return ZPLuaGuarded(state, [&] {
        if (lua_isinteger(state, 3)) {
            const lua_Integer value = lua_tointeger(state, 3);
            const std::string_view choice = choiceArgument(state, 4, value);
            const auto bits = static_cast<std::uint64_t>(value);
            if (value >= 0 || session.numbersRead.kindOf(false, bits) == NumberKind::int64)
                session.output->number(name, bits, choice);
            else
                session.output->signedNumber(name, value, choice);
            return 0;
        }
        const double value = numberArgument(state, 3);
        const auto single = static_cast<float>(value);
        const bool isDouble = (static_cast<double>(single) != value && value == value) ||
                              session.numbersRead.kindOf(
                                  true, std::bit_cast<std::uint64_t>(value)) == NumberKind::float64;
        if (isDouble)
            session.output->float64(name, value);
        else
            session.output->float32(name, single);
        return 0;
    });
}

int signedNumber(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    const std::uint64_t word = wordArgument(state, 3);
    const lua_Integer bits = integerArgument(state, 4);
    luaL_argcheck(state, bits >= 1 && bits <= 64, 4, "is no number of bits from 1 to 64");
    // The sign moves to the top and back again.
    const auto value = static_cast<std::int64_t>(word << (64 - bits)) >> (64 - bits);
    return ZPLuaGuarded(state, [&] {
        session.output->signedNumber(name, value, choiceArgument(state, 5, value));
        return 0;
    });
}

int hex(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    const std::uint64_t word = wordArgument(state, 3);
    return ZPLuaGuarded(state, [&] {
        session.output->hexadecimal(name, word,
                                    choiceArgument(state, 4, static_cast<lua_Integer>(word)));
        return 0;
    });
}

int flags(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    const std::uint64_t word = wordArgument(state, 3);
    luaL_checktype(state, 4, LUA_TTABLE);
    return ZPLuaGuarded(state, [&] {
        std::string &names = session.scratch;
        names.clear();
        for (int bit = 0; bit < 64; ++bit) {
            if ((word >> bit & 1) == 0)
                continue;
            if (!names.empty())
                names += '\n';
            const auto own = nameOfNumber(state, 4, bit);
            names += own ? *own : ZPFormat("bit %d", bit);
            // One long name may be that of every bit.
            session.output->tree().requireRoom(names.size());
            lua_pop(state, 1);
        }
        session.output->flags(name, word, names);
        return 0;
    });
}

int bits(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    const std::uint64_t word = wordArgument(state, 3);
    const lua_Integer lowest = integerArgument(state, 4), count = integerArgument(state, 5);
    luaL_argcheck(state, lowest >= 0 && lowest <= 63, 4, "is no bit from 0 to 63");
    luaL_argcheck(state, count >= 1 && count <= 64 - lowest, 5,
                  "is no number of bits that a word has from there on");
    const auto lowestBit = static_cast<unsigned>(lowest), bitCount = static_cast<unsigned>(count);
    const std::uint64_t value = ZPFieldOutput::bitsOf(word, lowestBit, bitCount);
    return ZPLuaGuarded(state, [&] {
        session.output->bits(name, word, lowestBit, bitCount,
                             choiceArgument(state, 6, static_cast<lua_Integer>(value)));
        return 0;
    });
}

std::uint32_t identifierArgument(lua_State *state, int argument) {
    const std::uint64_t word = wordArgument(state, argument);
    luaL_argcheck(state, word <= 0xFFFFFFFF, argument, "is no identifier, which has 32 bits");
    return static_cast<std::uint32_t>(word);
}

int identifier(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::uint32_t value = identifierArgument(state, 2);
    return ZPLuaGuarded(state, [&] {
        session.output->identifier(value);
        return 0;
    });
}

int reference(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    const std::uint32_t value = identifierArgument(state, 3);
    return ZPLuaGuarded(state, [&] {
        session.output->reference(name, value);
        return 0;
    });
}

int boolean(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    luaL_checktype(state, 3, LUA_TBOOLEAN);
    return ZPLuaGuarded(state, [&] {
        session.output->boolean(name, lua_toboolean(state, 3));
        return 0;
    });
}

int text(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state), value = textArgument(state, 3);
    return ZPLuaGuarded(state, [&] {
        session.output->text(name, value);
        return 0;
    });
}

int bytes(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    std::size_t length;
    const char *value = luaL_checklstring(state, 3, &length);
    ZPLuaState::pay(state, ZPLuaState::workForBytes(length));
    return ZPLuaGuarded(state, [&] {
        session.output->bytes(name, {value, length});
        return 0;
    });
}

int vector(lua_State *state) {
    constexpr int kMostComponents = 4;
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    const int count = lua_gettop(state) - 2;
    luaL_argcheck(state, count >= 1 && count <= kMostComponents, 3, "wants one to four numbers");
    std::array<float, kMostComponents> components{};
    for (int index = 0; index < count; ++index)
        components[static_cast<std::size_t>(index)] =
            static_cast<float>(numberArgument(state, 3 + index));
    return ZPLuaGuarded(state, [&] {
        session.output->vector(name, std::span(components).first(static_cast<std::size_t>(count)));
        return 0;
    });
}

int group(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    luaL_checktype(state, 3, LUA_TFUNCTION);
    return ZPLuaGuarded(state, [&] {
        session.output->openContainer(Kind::group, name);
        lua_pushvalue(state, 3);
        lua_call(state, 0, 0);
        session.output->closeContainer();
        return 0;
    });
}

/// Calls the function that is the fourth argument with 0, 1 and so on, up to as many times as the
/// third says. Each call has to add something, or a count from a hostile record could go on without
/// ever reaching the record's end.
template <class CallOnce>
int fillList(lua_State *state, CallOnce callOnce) {
    ZPLuaSession &session = sessionOf(state);
    const std::string_view name = nameArgument(state);
    const lua_Integer count = integerArgument(state, 3);
    luaL_checktype(state, 4, LUA_TFUNCTION);
    return ZPLuaGuarded(state, [&] {
        session.output->openContainer(Kind::list, name);
        for (lua_Integer index = 0; index < count; ++index)
            callOnce(session, [&] {
                lua_pushvalue(state, 4);
                lua_pushinteger(state, index);
                lua_call(state, 1, 0);
            });
        session.output->closeContainer();
        return 0;
    });
}

int list(lua_State *state) {
    return fillList(state, [&](ZPLuaSession &session, auto call) {
        const ZPRecordTree &tree = session.output->tree();
        const std::uint32_t place = tree.size();
        call();
        if (tree.size() == place || tree[place].end != tree.size())
            luaL_error(state, "each call of a list's function adds one value; for several there is "
                              "out:groups");
    });
}

int groups(lua_State *state) {
    return fillList(state, [](ZPLuaSession &session, auto call) {
        session.output->openContainer(Kind::group, {});
        call();
        session.output->closeContainer();
    });
}

constexpr luaL_Reg kMethods[] = {
    {"number", number}, {"signed", signedNumber},   {"hex", hex},         {"flags", flags},
    {"bits", bits},     {"identifier", identifier}, {"boolean", boolean}, {"reference", reference},
    {"text", text},     {"bytes", bytes},           {"vector", vector},   {"group", group},
    {"list", list},     {"groups", groups},
};

} // namespace

void ZPLuaPushOutput(lua_State *state, ZPLuaSession &session) {
    session.outputObject = ZPLuaPushObject(state, session, kMethods, std::size(kMethods));
}
