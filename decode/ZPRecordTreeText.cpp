#include "decode/ZPRecordTreeText.h"

#include "io/ZPExtensions.h"
#include "io/ZPLogger.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <charconv>

namespace {

using Kind = ZPRecordValueKind;

/// The shortest text that reads back as the same number; no locale has a say in it.
template <class Float>
std::string shortestText(Float value) {
    char digits[32];
    return {digits, std::to_chars(digits, std::end(digits), value).ptr};
}

std::string hexadecimalText(const ZPRecordValue &value) {
    const auto digits = static_cast<int>(std::min(value.range.length, 8u) * 2);
    return ZPFormat("%0*llx", digits, static_cast<unsigned long long>(value.number));
}

/// The number of a flags word, with a dot for each zero, as wide as its bytes.
std::string flagsText(const ZPRecordValue &value) {
    std::string text = hexadecimalText(value);
    std::ranges::replace(text, '0', '.');
    return text;
}

std::string bitsText(const ZPRecordValue &value) {
    const unsigned last = value.lowestBit + value.bitCount - 1u;
    const auto number = static_cast<unsigned long long>(value.number);
    return value.bitCount == 1 ? ZPFormat("%llu [bit %u]", number, last)
                               : ZPFormat("%llu [bits %u-%u]", number, value.lowestBit, last);
}

std::string valueNames(const ZPRecordTree &tree, const ZPRecordValue &value) {
    std::string names(tree.text(value));
    if (names.empty())
        return names;
    for (std::size_t at = 0; (at = names.find('\n', at)) != std::string::npos;)
        names.replace(at, 1, ", ");
    return ZPFormat(" (%s)", ZPEscapedText(names).c_str());
}

std::size_t countOfValues(const ZPRecordTree &tree, const ZPRecordValue &container) {
    std::size_t count = 0;
    const auto first = static_cast<std::uint32_t>(&container - &tree[0]) + 1;
    for (std::uint32_t place = first; place < container.end; place = tree[place].end)
        ++count;
    return count;
}

class TextWriter {
  public:
    TextWriter(const ZPRecordTree &tree, bool withOffsets)
        : _tree(tree), _withOffsets(withOffsets) {}

    /// The values from one place to another; of a list, they are numbered.
    void write(std::uint32_t place, std::uint32_t end, bool isList) {
        for (std::size_t index = 0; place < end; place = _tree[place].end, ++index) {
            const ZPRecordValue &value = _tree[place];
            std::string label = isList ? ZPFormat("[%zu]", index) : std::string();
            if (const auto name = _tree.name(value); !name.empty())
                label.append(isList ? " " : "").append(ZPEscapedText(name));
            writeLine(value, label.append(": ").append(ZPRecordValueText(_tree, value)));
            if (!value.isContainer())
                continue;
            _indentation += "  ";
            write(place + 1, value.end, value.kind == Kind::list);
            _indentation.resize(_indentation.size() - 2);
        }
    }

    const std::string &text() const { return _logger.outputString(); }

  private:
    void writeLine(const ZPRecordValue &value, const std::string &line) {
        std::string place;
        if (_withOffsets)
            place = ZPFormat("%08x %5u  ", value.range.offset, value.range.length);
        _logger.log("%s%s%s", place.c_str(), _indentation.c_str(), line.c_str());
    }

    const ZPRecordTree &_tree;
    const bool _withOffsets;
    ZPLogger _logger;
    std::string _indentation;
};

} // namespace

std::string ZPRecordValueText(const ZPRecordTree &tree, const ZPRecordValue &value) {
    switch (value.kind) {
    case Kind::group: return ZPFormat("%zu values", countOfValues(tree, value));
    case Kind::list: return ZPFormat("list of %zu", countOfValues(tree, value));
    case Kind::unsignedInteger: return std::to_string(value.number) + valueNames(tree, value);
    case Kind::signedInteger:
        return std::to_string(static_cast<std::int64_t>(value.number)) + valueNames(tree, value);
    case Kind::boolean: return value.number != 0 ? "true" : "false";
    case Kind::float32: return shortestText(static_cast<float>(ZPRecordTree::floatOf(value)));
    case Kind::float64: return shortestText(ZPRecordTree::floatOf(value));
    case Kind::hexadecimal:
        return ZPFormat("0x%s%s", hexadecimalText(value).c_str(), valueNames(tree, value).c_str());
    case Kind::flags: return flagsText(value) + valueNames(tree, value);
    case Kind::bits: return bitsText(value) + valueNames(tree, value);
    case Kind::identifier: return ZPFormat("%08x", static_cast<unsigned>(value.number));
    case Kind::reference: return ZPFormat("-> %08x", static_cast<unsigned>(value.number));
    case Kind::text: return ZPFormat("\"%s\"", ZPEscapedText(tree.text(value)).c_str());
    case Kind::bytes: {
        const std::string_view bytes = tree.text(value);
        return ZPHexString(std::as_bytes(std::span(bytes.data(), bytes.size())));
    }
    }
    return {};
}

std::string ZPRecordTreeText(const ZPRecordTree &tree, bool withOffsets) {
    TextWriter writer(tree, withOffsets);
    writer.write(0, tree.size(), false);
    return writer.text();
}
