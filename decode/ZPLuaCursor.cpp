// The `cursor` of a decoder in Lua: the reads of ZPDataCursor under their own names.

#include "decode/ZPLuaBinding.h"

#include <bit>

namespace {

using NumberKind = ZPLuaNumbersRead::Kind;

ZPLuaSession &sessionOf(lua_State *state) {
    ZPLuaSession &session = ZPLuaSession::of(state);
    if (lua_touserdata(state, 1) != session.cursorObject)
        luaL_error(state, "call the cursor's functions with a colon, as in cursor:readByte()");
    if (session.cursor == nullptr)
        luaL_error(state, "the cursor is read outside decode");
    return session;
}

void push(lua_State *state, std::string_view text) {
    lua_pushlstring(state, text.data(), text.size());
}
void push(lua_State *state, std::span<const std::byte> bytes) {
    push(state, std::string_view(reinterpret_cast<const char *>(bytes.data()), bytes.size()));
}
void pushFloats(lua_State *state, std::initializer_list<float> values) {
    for (const float value : values)
        lua_pushnumber(state, static_cast<double>(value));
}

template <auto Read>
int readInteger(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    return ZPLuaGuarded(state, [&] {
        const auto value = (session.cursor->*Read)();
        if constexpr (sizeof value == 8)
            session.numbersRead.note(NumberKind::int64, value);
        lua_pushinteger(state, static_cast<lua_Integer>(value));
        return 1;
    });
}

template <auto Read>
int readFloat(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    return ZPLuaGuarded(state, [&] {
        const auto value = (session.cursor->*Read)();
        const auto number = static_cast<double>(value);
        session.numbersRead.note(sizeof value == 8 ? NumberKind::float64 : NumberKind::float32,
                                 std::bit_cast<std::uint64_t>(number));
        lua_pushnumber(state, number);
        return 1;
    });
}

/// A string whose length stands before it; the argument says whether it is aligned.
template <auto Read>
int readString(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const bool align = lua_toboolean(state, 2);
    return ZPLuaGuarded(state, [&] {
        push(state, std::string_view((session.cursor->*Read)(align)));
        return 1;
    });
}

std::uint64_t lengthArgument(lua_State *state) {
    ZPLuaState::payForNumber(state, 2);
    const lua_Integer length = luaL_checkinteger(state, 2);
    luaL_argcheck(state, length >= 0, 2, "is negative");
    return static_cast<std::uint64_t>(length);
}

int readUTF16StringOfLength(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::uint64_t length = lengthArgument(state);
    return ZPLuaGuarded(state, [&] {
        push(state, std::string_view(
                        session.cursor->readUTF16StringOfLength(length, lua_toboolean(state, 3))));
        return 1;
    });
}

int wq_readStringOfLength(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::uint64_t length = lengthArgument(state);
    return ZPLuaGuarded(state, [&] {
        push(state, std::string_view(session.cursor->wq_readStringOfLength(
                        length, lua_toboolean(state, 3), lua_toboolean(state, 4))));
        return 1;
    });
}

int wq_readPartialBigInt32(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::uint64_t count = lengthArgument(state);
    luaL_argcheck(state, count <= 4, 2, "is more than 4 bytes");
    return ZPLuaGuarded(state, [&] {
        lua_pushinteger(state,
                        session.cursor->wq_readPartialBigInt32(static_cast<unsigned>(count)));
        return 1;
    });
}

int readLittleVector3(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    return ZPLuaGuarded(state, [&] {
        const ZPVector3 vector = session.cursor->readLittleVector3();
        pushFloats(state, {vector.x, vector.y, vector.z});
        return 3;
    });
}

template <auto Read>
int readFourFloats(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    return ZPLuaGuarded(state, [&] {
        const auto vector = (session.cursor->*Read)();
        pushFloats(state, {vector.x, vector.y, vector.z, vector.w});
        return 4;
    });
}

template <auto Read>
int readBytes(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    const std::uint64_t length = lengthArgument(state);
    return ZPLuaGuarded(state, [&] {
        push(state, (session.cursor->*Read)(length));
        return 1;
    });
}

int readUUID(lua_State *state) {
    ZPLuaSession &session = sessionOf(state);
    return ZPLuaGuarded(state, [&] {
        push(state, session.cursor->readUUID());
        return 1;
    });
}

/// Moves without reading: what is passed over belongs to no value.
template <class Move>
int moveCursor(lua_State *state, Move move) {
    ZPLuaSession &session = sessionOf(state);
    return ZPLuaGuarded(state, [&] {
        move(*session.cursor);
        session.output->skipToCursor();
        return 0;
    });
}

int setOffset(lua_State *state) {
    return moveCursor(state,
                      [&](ZPDataCursor &cursor) { cursor.setOffset(lengthArgument(state)); });
}
int advanceByLength(lua_State *state) {
    return moveCursor(state,
                      [&](ZPDataCursor &cursor) { cursor.advanceByLength(lengthArgument(state)); });
}
int alignToTwoByteBoundary(lua_State *state) {
    return moveCursor(state, [](ZPDataCursor &cursor) { cursor.alignToTwoByteBoundary(); });
}
int alignToFourByteBoundary(lua_State *state) {
    return moveCursor(state, [](ZPDataCursor &cursor) { cursor.alignToFourByteBoundary(); });
}

int offset(lua_State *state) {
    lua_pushinteger(state, static_cast<lua_Integer>(sessionOf(state).cursor->offset()));
    return 1;
}
int remaining(lua_State *state) {
    lua_pushinteger(state, static_cast<lua_Integer>(sessionOf(state).cursor->remaining()));
    return 1;
}
int isAtEnd(lua_State *state) {
    lua_pushboolean(state, sessionOf(state).cursor->isAtEnd());
    return 1;
}
int isOnFourByteBoundary(lua_State *state) {
    lua_pushboolean(state, sessionOf(state).cursor->isOnFourByteBoundary());
    return 1;
}

using Cursor = ZPDataCursor;
using StringRead = std::string (Cursor::*)(bool);

constexpr luaL_Reg kMethods[] = {
    {"readByte", readInteger<&Cursor::readByte>},
    {"readLittleInt16", readInteger<&Cursor::readLittleInt16>},
    {"readLittleInt32", readInteger<&Cursor::readLittleInt32>},
    {"readLittleInt64", readInteger<&Cursor::readLittleInt64>},
    {"readBigInt16", readInteger<&Cursor::readBigInt16>},
    {"readBigInt32", readInteger<&Cursor::readBigInt32>},
    {"readBigInt64", readInteger<&Cursor::readBigInt64>},
    {"readLittleFloat32", readFloat<&Cursor::readLittleFloat32>},
    {"readBigFloat32", readFloat<&Cursor::readBigFloat32>},
    {"readLittleFloat64", readFloat<&Cursor::readLittleFloat64>},
    {"readLittleVector3", readLittleVector3},
    {"readLittleVector4", readFourFloats<&Cursor::readLittleVector4>},
    {"readLittleQuaternion", readFourFloats<&Cursor::readLittleQuaternion>},
    {"readDataWithLength", readBytes<&ZPDataCursor::readDataWithLength>},
    {"peekDataWithLength", readBytes<&ZPDataCursor::peekDataWithLength>},
    {"readUUID", readUUID},
    {"readUTF16StringOfLength", readUTF16StringOfLength},
    {"readLength8UTF16StringAndAlign", readString<&Cursor::readLength8UTF16StringAndAlign>},
    {"wq_readStringOfLength", wq_readStringOfLength},
    {"wq_readLength8StringAndAlign", readString<&Cursor::wq_readLength8StringAndAlign>},
    {"wq_readLength15StringAndAlign", readString<&Cursor::wq_readLength15StringAndAlign>},
    {"wq_readLength16StringAndAlign", readString<&Cursor::wq_readLength16StringAndAlign>},
    {"wq_readLength32StringAndAlign", readString<&Cursor::wq_readLength32StringAndAlign>},
    {"wq_readLengthVar30StringAndAlign", readString<&Cursor::wq_readLengthVar30StringAndAlign>},
    {"wq_readLengthVar30UTF16StringAndAlign",
     readString<&Cursor::wq_readLengthVar30UTF16StringAndAlign>},
    {"wq_readLength15UTF16StringAndAlign", readString<&Cursor::wq_readLength15UTF16StringAndAlign>},
    {"wq_readNibbledLength16StringAndAlign",
     readString<static_cast<StringRead>(&Cursor::wq_readNibbledLength16StringAndAlign)>},
    {"wq_readPartialBigInt32", wq_readPartialBigInt32},
    {"wq_readLittleInt15", readInteger<&Cursor::wq_readLittleInt15>},
    {"wq_readWackyInt15", readInteger<&Cursor::wq_readWackyInt15>},
    {"wq_readPackedLittleInt30", readInteger<&Cursor::wq_readPackedLittleInt30>},
    {"wq_readPackedLittleInt32a", readInteger<&Cursor::wq_readPackedLittleInt32a>},
    {"wq_readPackedLittleInt32", readInteger<&Cursor::wq_readPackedLittleInt32>},
    {"setOffset", setOffset},
    {"advanceByLength", advanceByLength},
    {"alignToTwoByteBoundary", alignToTwoByteBoundary},
    {"alignToFourByteBoundary", alignToFourByteBoundary},
    {"isOnFourByteBoundary", isOnFourByteBoundary},
    {"offset", offset},
    {"remaining", remaining},
    {"isAtEnd", isAtEnd},
};

} // namespace

void ZPLuaPushCursor(lua_State *state, ZPLuaSession &session) {
    session.cursorObject = ZPLuaPushObject(state, session, kMethods, std::size(kMethods));
}
