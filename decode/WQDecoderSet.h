#pragma once

#include "decode/WQRecordDecoders.h"
#include "decode/ZPLuaDecoder.h"

#include <array>
#include <map>

/// What is known of a record before it is decoded.
struct WQRecordKind {
    /// Whose archive it is in.
    ZPGorvaneGame game = ZPGorvaneGame::first;
    /// Of the class that the game's table has for it; empty where there is none.
    std::string_view className = {};
    /// Identifier bits 24 to 31, in archives where these are a type.
    std::optional<std::uint8_t> type = std::nullopt;
};

/// Which decoders there are: those in C++, and the Lua files of some folders. A record class with a
/// decoder in C++ keeps it; of several Lua decoders for the same records, the one found first
/// counts.
class WQDecoderSet {
  public:
    struct File {
        std::filesystem::path path;
        /// Why the file is no decoder; empty when it is one.
        std::string fault;
        /// What its author should know of one that is in order, such as a class that nobody has.
        std::string remark;
        /// Filled when it is one.
        ZPLuaDecoderDescription description;
        std::unique_ptr<ZPLuaDecoder> decoder;
    };

    /// Adds the files of a folder that end in ".lua", in the order of their names. False when there
    /// is no such folder or it cannot be read.
    bool addFolder(const std::filesystem::path &folder);

    /// In the order in which they were found, the broken ones too.
    const std::vector<File> &files() const { return _files; }

    /// Null when no decoder is written in C++.
    [[nodiscard]] const WQRecordDecoderRow *rowFor(const WQRecordKind &kind) const;
    /// The place in `files()` of the Lua decoder for these records; none when there is none, or
    /// there is one in C++.
    [[nodiscard]] std::optional<std::size_t> fileFor(const WQRecordKind &kind) const;
    /// The record class's name, or that of the Lua decoder; empty when there is neither.
    [[nodiscard]] std::string_view nameOf(const WQRecordKind &kind) const;

  private:
    /// Places in `_files`, those that count more first.
    using Places = std::vector<std::size_t>;
    std::optional<std::size_t> firstFor(ZPGorvaneGame game, const Places &places) const;

    std::vector<File> _files;
    std::array<Places, 256> _filesByType;
    std::map<std::string, Places, std::less<>> _filesByClass;
};

/// The decoders of one thread, made as they are asked for.
class WQDecoders {
  public:
    /// Borrows the set, which must not change meanwhile.
    WQDecoders(const WQDecoderSet &set, const WQDecodingContext &context);

    /// Null where nobody knows the format. Valid as long as this.
    [[nodiscard]] ZPRecordDecoder *decoderFor(const WQRecordKind &kind);

  private:
    const WQDecoderSet &_set;
    const WQDecodingContext _context;
    std::vector<std::unique_ptr<ZPRecordDecoder>> _decodersOfRows;
    std::vector<std::unique_ptr<ZPRecordDecoder>> _decodersOfFiles;
};
