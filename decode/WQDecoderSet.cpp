#include "decode/WQDecoderSet.h"

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

/// A file that stopped being a decoder since the set was made.
class BrokenDecoder : public ZPRecordDecoder {
  public:
    explicit BrokenDecoder(std::string message) : _message(std::move(message)) {}
    void decode(ZPDataCursor &, ZPFieldOutput &) override { throw ZPGenericException(_message); }

  private:
    const std::string _message;
};

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
        File &file = _files.emplace_back(File{path, {}, {}});
        const auto decoder = ZPLuaDecoder::decoderAtPath(path, file.fault);
        if (decoder == nullptr)
            continue;
        file.description = decoder->description();
        for (const std::uint8_t type : file.description.types)
            if (!_filesByType[type])
                _filesByType[type] = place;
        for (const std::string &name : file.description.classes)
            _filesByClass.try_emplace(name, place);
    }
    return true;
}

const WQRecordDecoderRow *WQDecoderSet::rowFor(const WQRecordKind &kind) const {
    const auto *row =
        std::ranges::find(kWQRecordDecoders, kind.className, &WQRecordDecoderRow::className);
    return row != std::end(kWQRecordDecoders) ? row : nullptr;
}

std::optional<std::size_t> WQDecoderSet::fileFor(const WQRecordKind &kind) const {
    if (_files.empty() || rowFor(kind) != nullptr)
        return std::nullopt;
    if (!kind.className.empty())
        if (const auto found = _filesByClass.find(kind.className); found != _filesByClass.end())
            return found->second;
    return kind.type ? _filesByType[*kind.type] : std::nullopt;
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
    if (decoder == nullptr) {
        std::string message;
        decoder = ZPLuaDecoder::decoderAtPath(_set.files()[*file].path, message);
        if (decoder == nullptr)
            decoder = std::make_unique<BrokenDecoder>(message);
    }
    return decoder.get();
}
