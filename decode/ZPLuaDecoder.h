#pragma once

#include "archive/ZPGorvaneGame.h"
#include "decode/ZPRecordDecoder.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

struct lua_State;
struct ZPLuaSession;
class ZPLuaState;

/// What a decoder's file says of itself.
struct ZPLuaDecoderDescription {
    std::filesystem::path path;
    std::string name;
    /// The types (identifier bits 24 to 31) and the record classes that it reads.
    std::vector<std::uint8_t> types;
    std::vector<std::string> classes;
    /// The games whose archives hold these records; the first when it does not say.
    std::vector<ZPGorvaneGame> games;
    /// Of the files that its records are extracted to, without a dot; empty when it does not say.
    std::string extension;

    bool isFor(ZPGorvaneGame game) const {
        return std::find(games.begin(), games.end(), game) != games.end();
    }
};

/// A decoder written in Lua: a file that returns a table of `name`, `types` or `classes` or both,
/// `decode`, a function of the cursor and the output, and perhaps `games` and `extension`.
///
/// It can do nothing but decode, and each record finds it as it was when it was loaded: what comes
/// of a record depends on its bytes alone. One that takes too much work or memory, or meets an
/// error in the script, is a fault of that record. Peak memory is in proportion to the record's
/// bytes.
class ZPLuaDecoder : public ZPRecordDecoder {
  public:
    /// Null, with a message that names the file and, where there is one, the line.
    [[nodiscard]] static std::unique_ptr<ZPLuaDecoder>
    decoderAtPath(const std::filesystem::path &path, std::string &message);
    /// One more of the same script, for another thread, which is loaded when it is first used.
    [[nodiscard]] std::unique_ptr<ZPLuaDecoder> copy() const;
    /// Gives back the memory of the interpreter until it is used.
    void rest();

    ~ZPLuaDecoder() override;
    const ZPLuaDecoderDescription &description() const { return _description; }
    void decode(ZPDataCursor &cursor, ZPFieldOutput &output) override;

  private:
    ZPLuaDecoder();
    bool load(std::string &message);
    /// With the file's name in front, unless it is there.
    std::string namedMessage(const std::string &message) const;
    static int readDescription(lua_State *state);

    ZPLuaDecoderDescription _description;
    std::shared_ptr<const std::string> _script;
    std::unique_ptr<ZPLuaSession> _session;
    std::unique_ptr<ZPLuaState> _state;
};
