#include "decode/ZPRecordTree.h"

#include <bit>

namespace {

// A byte makes a few values at most, and their names and texts take some times as much room; a
// decoder that makes many more runs wild. A value takes 48 bytes beside its text.
constexpr std::size_t kValuesPerByte = 8, kValuesPerRecord = 4096;
constexpr std::size_t kTextPerByte = 64, kTextPerRecord = 256 << 10;
/// Where something changed is told by the names of all containers around it.
constexpr std::size_t kLongestName = 255;
/// Deeper than any record, and shallow enough for those who walk the tree by recursion.
constexpr std::size_t kMostContainers = 100;

} // namespace

void ZPRecordTree::reset(std::size_t recordSize) {
    _values.clear();
    _text.clear();
    _open.clear();
    _mostValues = kValuesPerRecord + kValuesPerByte * recordSize;
    _mostText = kTextPerRecord + kTextPerByte * recordSize;
}

void ZPRecordTree::requireRoom(std::size_t textSize) const {
    if (textSize > _mostText - _text.size())
        throw ZPRecordTreeOverflow("the record makes more text than its bytes account for");
}

std::uint32_t ZPRecordTree::store(std::string_view text) {
    requireRoom(text.size());
    const auto start = static_cast<std::uint32_t>(_text.size());
    _text += text;
    return start;
}

ZPRecordValue &ZPRecordTree::add(ZPRecordValueKind kind, std::string_view name, ZPByteRange range) {
    if (_values.size() >= _mostValues)
        throw ZPRecordTreeOverflow("the record makes more values than its bytes account for");
    if (name.size() > kLongestName)
        throw ZPRecordTreeOverflow("a value's name is longer than 255 bytes");
    const std::uint32_t nameStart = store(name);
    ZPRecordValue &value = _values.emplace_back();
    value.kind = kind;
    value.range = range;
    value.nameStart = nameStart;
    value.nameLength = static_cast<std::uint32_t>(name.size());
    value.end = size();
    return value;
}

std::uint32_t ZPRecordTree::openContainer(ZPRecordValueKind kind, std::string_view name,
                                          ZPByteRange range) {
    if (_open.size() >= kMostContainers)
        throw ZPRecordTreeOverflow("the record's groups and lists lie too deep in each other");
    const std::uint32_t place = size();
    add(kind, name, range);
    _open.push_back(place);
    return place;
}

void ZPRecordTree::closeContainer(std::uint32_t endOffset) {
    ZPRecordValue &container = _values[_open.back()];
    _open.pop_back();
    container.end = size();
    if (endOffset > container.range.offset)
        container.range.length = endOffset - container.range.offset;
}

void ZPRecordTree::addNumber(ZPRecordValueKind kind, std::string_view name, std::uint64_t number,
                             ZPByteRange range, std::string_view valueNames) {
    const std::uint32_t textStart = store(valueNames);
    ZPRecordValue &value = add(kind, name, range);
    value.number = number;
    value.textStart = textStart;
    value.textLength = static_cast<std::uint32_t>(valueNames.size());
}

void ZPRecordTree::addFloat(ZPRecordValueKind kind, std::string_view name, double value,
                            ZPByteRange range) {
    add(kind, name, range).number = std::bit_cast<std::uint64_t>(value);
}

void ZPRecordTree::addBits(std::string_view name, std::uint64_t number, unsigned lowestBit,
                           unsigned bitCount, ZPByteRange range, std::string_view valueNames) {
    addNumber(ZPRecordValueKind::bits, name, number, range, valueNames);
    _values.back().lowestBit = static_cast<std::uint8_t>(lowestBit);
    _values.back().bitCount = static_cast<std::uint8_t>(bitCount);
}

void ZPRecordTree::addText(ZPRecordValueKind kind, std::string_view name, std::string_view text,
                           ZPByteRange range) {
    addNumber(kind, name, 0, range, text);
}

double ZPRecordTree::floatOf(const ZPRecordValue &value) {
    return std::bit_cast<double>(value.number);
}
