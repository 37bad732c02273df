#include "data_tool/FileSelection.h"

#include "game/WQRecordClass.h"
#include "io/ZPLineReader.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <unistd.h>

namespace {

std::optional<std::uint32_t> hexadecimalIn(std::string_view text, std::size_t mostDigits) {
    if (text.starts_with("0x") || text.starts_with("0X"))
        text.remove_prefix(2);
    std::uint32_t value = 0;
    const char *end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, value, 16);
    if (text.size() > mostDigits || fault != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

[[noreturn]] void refuse(const char *option, std::string_view text, const char *wanted) {
    throw CommandFailure(
        ZPFormat("%s: '%.*s' is no %s", option, static_cast<int>(text.size()), text.data(), wanted),
        kUsageError);
}

std::uint64_t sizeIn(std::string_view text) {
    std::uint64_t size = 0;
    const char *end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, size);
    const std::string_view unit(stop, static_cast<std::size_t>(end - stop));
    const unsigned shift = unit == "K" ? 10 : unit == "M" ? 20 : 0;
    if (fault != std::errc() || (!unit.empty() && shift == 0) || size > UINT64_MAX >> shift)
        refuse("--larger", text, "number of bytes, such as 512, 4K or 1M");
    return size << shift;
}

std::optional<std::int64_t> decimalIn(std::string_view digits) {
    std::int64_t number = 0;
    const char *end = digits.data() + digits.size();
    const auto [stop, fault] = std::from_chars(digits.data(), end, number);
    return fault == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// Seconds since 1970, of a date or of that number itself.
std::int64_t timeIn(std::string_view text) {
    using namespace std::chrono;
    // A minus parts a date, so no number has one.
    const auto parts = ZPSplitText(text, '-');
    if (parts.size() == 1)
        if (const auto seconds = decimalIn(text))
            return *seconds;
    if (parts.size() == 3 && parts[0].size() == 4 && parts[1].size() <= 2 && parts[2].size() <= 2) {
        const auto y = decimalIn(parts[0]), m = decimalIn(parts[1]), d = decimalIn(parts[2]);
        if (y && m && d) {
            const year_month_day date(year(static_cast<int>(*y)), month(static_cast<unsigned>(*m)),
                                      day(static_cast<unsigned>(*d)));
            if (date.ok())
                return sys_seconds(sys_days(date)).time_since_epoch().count();
        }
    }
    refuse("--newer", text, "date such as 2005-03-31, nor a number of seconds since 1970");
}

bool isClassName(std::string_view text, const WQDecoderSet &decoders) {
    const auto hasName = [=](const WQRecordClass &row) { return row.name == text; };
    return std::ranges::any_of(WQPortalRecordClasses(), hasName) ||
           std::ranges::any_of(WQCellRecordClasses(), hasName) ||
           std::ranges::any_of(decoders.files(), [=](const WQDecoderSet::File &file) {
               return file.description.name == text;
           });
}

} // namespace

std::optional<std::uint32_t> identifierInText(std::string_view text) {
    return hexadecimalIn(text, 8);
}

void FileSelection::addOptions(CLI::App &command) {
    const auto addList = [&](const char *name, std::vector<std::string> &texts, const char *type,
                             const char *help) {
        command.add_option(name, texts, help)
            ->type_name(type)
            ->delimiter(',')
            ->allow_extra_args(false);
    };
    addList("--type", _typeTexts, "TYPE",
            "Files of a type (identifier bits 24 to 31), such as 0x13, or of a class");
    addList("--id", _rangeTexts, "RANGE", "Files with an identifier, or from one to another: A-B");
    addList("--block", _blockTexts, "XXYY", "Files of a land block of a cell archive");
    command.add_option("--larger", _largerText, "Files of more bytes; K and M may follow")
        ->type_name("SIZE")
        ->check(isNotEmpty);
    command.add_option("--newer", _newerText, "Files changed since a date (UTC)")
        ->type_name("DATE")
        ->check(isNotEmpty);
    auto *damaged = command.add_flag("--damaged", _wantsDamaged,
                                     "Files that cannot be read, or share blocks with others");
    command.add_flag("--sound", _wantsSound, "All other files")->excludes(damaged);
    command
        .add_option("--ids-from", _listPath,
                    "Files whose identifiers a file lists, one a line; - is standard input")
        ->type_name("FILE")
        ->check(isNotEmpty);
}

void FileSelection::prepare(const WQDecoderSet &decoders) {
    _decoders = &decoders;
    for (const std::string &text : _typeTexts) {
        if (const auto type = hexadecimalIn(text, 2))
            _types.push_back(*type);
        else if (isClassName(text, decoders))
            _classes.push_back(text);
        else
            refuse("--type", text, "type, two hexadecimal digits, nor the name of a class");
    }
    for (const std::string &text : _blockTexts) {
        const auto block = hexadecimalIn(text, 4);
        if (!block)
            refuse("--block", text, "land block, four hexadecimal digits");
        _blocks.push_back(*block);
    }
    for (const std::string &text : _rangeTexts) {
        const auto parts = ZPSplitText(text, '-');
        const auto first = identifierInText(parts.front()), last = identifierInText(parts.back());
        if (!first || !last || parts.size() > 2 || *first > *last)
            refuse("--id", text, "identifier or range of them, such as 0x06000000-0x06ffffff");
        _ranges.push_back({*first, *last});
    }
    if (!_largerText.empty())
        _larger = sizeIn(_largerText);
    if (!_newerText.empty())
        _newer = timeIn(_newerText);
    if (!_listPath.empty())
        readIdentifiers();
    _isRestricted = !_typeTexts.empty() || !_blocks.empty() || !_ranges.empty() || _larger ||
                    _newer || _wantsDamaged || _wantsSound || _listed;
}

/// Lines of identifiers, or the TSV of `list`, `diff` and `check`, whose first two columns are
/// identifier and archive: without its header too, and in any order, as `grep` and `sort` leave it.
void FileSelection::readIdentifiers() {
    constexpr std::size_t kFewestColumns = 6, kLongestLine = 1 << 20;
    _listed.emplace();
    const auto file = _listPath == "-" ? std::make_unique<ZPInputFile>(STDIN_FILENO)
                                       : std::make_unique<ZPInputFile>(_listPath);
    ZPLineReader lines(*file, kLongestLine, SIZE_MAX);
    bool hasArchives = false;
    for (std::string line; lines.next(line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        const auto fields = ZPSplitText(line, '\t');
        if (fields[0].empty())
            continue;
        if (fields[0] == "identifier") {
            hasArchives = fields.size() > 1 && fields[1] == "archive";
            continue;
        }
        const auto identifier = identifierInText(fields[0]);
        if (!identifier)
            throw CommandFailure(ZPFormat("%s:%zu: '%s' does not begin with an identifier",
                                          _listPath.c_str(), lines.lineCount(), line.c_str()),
                                 kUsageError);
        const bool hasArchive =
            fields.size() >= kFewestColumns || (hasArchives && fields.size() > 1);
        _listed->insert({*identifier, std::string(hasArchive ? fields[1] : "")});
    }
    if (!lines.failure().empty())
        throw CommandFailure(_listPath + ": cannot be read: " + lines.failure(), kUsageError);
}

std::vector<std::string> FileSelection::optionsWithoutFiles(const DataSet &dataSet) const {
    std::vector<std::string> options;
    const auto noteUnlessAny = [&](const std::string &option, const auto &isOf) {
        for (const Archive &archive : dataSet.archives)
            for (const ZPGorvaneFileEntry &entry : archive.entries())
                if (isOf(archive, entry.identifier))
                    return;
        options.push_back(option);
    };
    for (const std::uint32_t type : _types)
        noteUnlessAny(ZPFormat("--type 0x%02x", type),
                      [&](const Archive &archive, auto identifier) {
                          return archive.kindOf(identifier).type == type;
                      });
    for (const std::string &name : _classes)
        noteUnlessAny("--type " + name, [&](const Archive &archive, auto identifier) {
            return _decoders->nameOf(archive.kindOf(identifier)) == name;
        });
    for (const Range &range : _ranges)
        noteUnlessAny(ZPFormat("--id %08x-%08x", range.first, range.last),
                      [&](const Archive &, auto identifier) { return range.contains(identifier); });
    for (const std::uint32_t block : _blocks)
        noteUnlessAny(
            ZPFormat("--block %04x", block), [&](const Archive &archive, auto identifier) {
                return archive.role == ZPGorvaneArchiveRole::cell && identifier >> 16 == block;
            });
    return options;
}

bool FileSelection::sayWhatIsNotThere(const DataSet &dataSet) const {
    const auto options = optionsWithoutFiles(dataSet);
    for (const std::string &option : options)
        say(option + ": there are no such files");
    return options.empty();
}

bool FileSelection::matchesType(const Archive &archive, std::uint32_t identifier) const {
    const WQRecordKind kind = archive.kindOf(identifier);
    if (kind.type && std::ranges::find(_types, *kind.type) != _types.end())
        return true;
    return !_classes.empty() &&
           std::ranges::find(_classes, _decoders->nameOf(kind)) != _classes.end();
}

bool FileSelection::matches(const Archive &archive, const ZPGorvaneFileEntry &entry) const {
    const std::uint32_t identifier = entry.identifier;
    if (!_typeTexts.empty() && !matchesType(archive, identifier))
        return false;
    if (!_ranges.empty() && std::ranges::none_of(_ranges, [=](const Range &range) {
            return range.contains(identifier);
        }))
        return false;
    if (!_blocks.empty() && (archive.role != ZPGorvaneArchiveRole::cell ||
                             std::ranges::find(_blocks, identifier >> 16) == _blocks.end()))
        return false;
    if ((_larger && entry.fileSize <= *_larger) || (_newer && entry.mtime < *_newer))
        return false;
    if (_listed && !_listed->contains({identifier, {}}) &&
        !_listed->contains({identifier, archive.name}))
        return false;
    if (!_wantsDamaged && !_wantsSound)
        return true;
    return (archive.damage->causeOf(identifier) == nullptr) == _wantsSound;
}
