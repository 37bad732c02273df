#include "decode/WQDecoderSet.h"

#include "game/WQRecordClass.h"

#include <algorithm>
#include <system_error>

namespace {

/// A decoder in C++.
class RowDecoder : public ZPRecordDecoder {
  public:
    RowDecoder(const WQRecordDecoderRow &row, const WQDecodingContext &context)
        : _row(row), _context(context) {}
    void decode(ZPDataCursor &cursor, ZPFieldOutput &output) override {
        _row.decode(cursor, output, _context);
    }

  private:
    const WQRecordDecoderRow &_row;
    const WQDecodingContext &_context;
};

bool isRecordClass(std::string_view name) {
    for (const auto classes : {WQPortalRecordClasses(), WQCellRecordClasses()})
        if (std::ranges::find(classes, name, &WQRecordClass::name) != classes.end())
            return true;
    return false;
}

const WQRecordDecoderRow *rowOfClass(std::string_view name) {
    const auto *row = std::ranges::find(kWQRecordDecoders, name, &WQRecordDecoderRow::className);
    return row != std::end(kWQRecordDecoders) ? row : nullptr;
}

std::string remarkOn(const ZPLuaDecoderDescription &decoder) {
    std::string remark;
    const auto add = [&](std::string_view name, const char *what) {
        remark.append(remark.empty() ? "" : ", ").append(name).append(what);
    };
    for (const std::string &name : decoder.classes)
        if (!isRecordClass(name))
            add(name, " is no record class");
        else if (rowOfClass(name) != nullptr)
            add(name, " is decoded by the program itself");
    for (const WQRecordClass &recordClass : WQPortalRecordClasses())
        if (std::ranges::find(decoder.types, recordClass.type) != decoder.types.end() &&
            decoder.isFor(ZPGorvaneGame::first) && rowOfClass(recordClass.name) != nullptr)
            add(recordClass.name, " is decoded by the program itself");
    return remark;
}

} // namespace

bool WQDecoderSet::addFolder(const std::filesystem::path &folder) {
    std::error_code fault;
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::directory_iterator entry(folder, fault), end; !fault && entry != end;
         entry.increment(fault))
        if (entry->path().extension() == ".lua")
            paths.push_back(entry->path());
    if (fault)
        return false;
    std::ranges::sort(paths);
    for (const std::filesystem::path &path : paths) {
        const std::size_t place = _files.size();
        File &file = _files.emplace_back();
        file.path = path;
        file.decoder = ZPLuaDecoder::decoderAtPath(path, file.fault);
        if (file.decoder == nullptr)
            continue;
        file.decoder->rest();
        file.description = file.decoder->description();
        file.remark = remarkOn(file.description);
        for (const std::uint8_t type : file.description.types)
            _filesByType[type].push_back(place);
        for (const std::string &name : file.description.classes)
            _filesByClass[name].push_back(place);
    }
    return true;
}

const WQRecordDecoderRow *WQDecoderSet::rowFor(const WQRecordKind &kind) const {
    return rowOfClass(kind.className);
}

std::optional<std::size_t> WQDecoderSet::firstFor(ZPGorvaneGame game, const Places &places) const {
    const auto found = std::ranges::find_if(
        places, [&](std::size_t place) { return _files[place].description.isFor(game); });
    return found != places.end() ? std::optional(*found) : std::nullopt;
}

std::optional<std::size_t> WQDecoderSet::fileFor(const WQRecordKind &kind) const {
    if (_files.empty() || rowFor(kind) != nullptr)
        return std::nullopt;
    if (const auto found = _filesByClass.find(kind.className); found != _filesByClass.end())
        if (const auto place = firstFor(kind.game, found->second))
            return place;
    return kind.type ? firstFor(kind.game, _filesByType[*kind.type]) : std::nullopt;
}

std::string_view WQDecoderSet::nameOf(const WQRecordKind &kind) const {
    if (!kind.className.empty())
        return kind.className;
    const auto file = fileFor(kind);
    return file ? std::string_view(_files[*file].description.name) : std::string_view();
}

WQDecoders::WQDecoders(const WQDecoderSet &set, const WQDecodingContext &context)
    : _set(set), _context(context), _decodersOfRows(std::size(kWQRecordDecoders)),
      _decodersOfFiles(set.files().size()) {}

ZPRecordDecoder *WQDecoders::decoderFor(const WQRecordKind &kind) {
    if (const WQRecordDecoderRow *row = _set.rowFor(kind)) {
        auto &decoder = _decodersOfRows[static_cast<std::size_t>(row - kWQRecordDecoders)];
        if (decoder == nullptr)
            decoder = std::make_unique<RowDecoder>(*row, _context);
        return decoder.get();
    }
    const auto file = _set.fileFor(kind);
    if (!file)
        return nullptr;
    auto &decoder = _decodersOfFiles[*file];
    if (decoder == nullptr)
        decoder = _set.files()[*file].decoder->copy();
    return decoder.get();
}
