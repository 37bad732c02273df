#pragma once

#include "decode/ZPLuaBinding.h"
#include "decode/ZPLuaState.h"
#include "decode/ZPRecordDecoder.h"

#include <vector>

/// What a decoder's file says of itself.
struct ZPLuaDecoderDescription {
    std::filesystem::path path;
    std::string name;
    /// The types (identifier bits 24 to 31) and the record classes that it reads.
    std::vector<std::uint8_t> types;
    std::vector<std::string> classes;
    /// Of the files that its records are extracted to, without a dot; empty when it does not say.
    std::string extension;
};

/// A decoder written in Lua: a file that returns a table of `name`, `types` or `classes` or both,
/// `decode`, a function of the cursor and the output, and perhaps `extension`.
///
/// It can do nothing but decode. A record that takes too long, too much memory or meets an error in
/// the script is a fault of that record; the next one finds the decoder as good as new.
class ZPLuaDecoder : public ZPRecordDecoder {
  public:
    /// Null, with a message that names the file and, where there is one, the line.
    [[nodiscard]] static std::unique_ptr<ZPLuaDecoder>
    decoderAtPath(const std::filesystem::path &path, std::string &message);

    const ZPLuaDecoderDescription &description() const { return _description; }
    void decode(ZPDataCursor &cursor, ZPFieldOutput &output) override;

  private:
    ZPLuaDecoder() = default;
    bool load(std::string &message);
    static int readDescription(lua_State *state);

    ZPLuaDecoderDescription _description;
    ZPLuaSession _session;
    std::unique_ptr<ZPLuaState> _state;
    unsigned _recordsThatTookTooLong = 0;
};
