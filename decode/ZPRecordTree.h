#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// What one value of a record is, which decides how it is shown.
enum class ZPRecordValueKind : std::uint8_t {
    group, ///< values under names
    list,  ///< values in order
    unsignedInteger,
    signedInteger,
    boolean,
    float32,
    float64,
    hexadecimal, ///< a number whose digits matter, not its size
    flags,       ///< a number whose bits have names
    bits,        ///< some bits of a number
    identifier,  ///< the record's own identifier
    reference,   ///< the identifier of another file
    text,
    bytes,
};

/// Where a value stood in its record, in bytes.
struct ZPByteRange {
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
};

/// One value of a tree. Numbers of all kinds are in `number`, as bits; `text` and `bytes` have
/// their characters in the tree, and so have the names that a number's value goes by.
struct ZPRecordValue {
    ZPRecordValueKind kind{};
    /// Of `bits`: the lowest bit, and how many.
    std::uint8_t lowestBit = 0, bitCount = 0;
    /// The place of the first value in the tree that does not belong to this one.
    std::uint32_t end = 0;
    ZPByteRange range;
    std::uint64_t number = 0;
    std::uint32_t nameStart = 0, nameLength = 0;
    std::uint32_t textStart = 0, textLength = 0;

    bool isContainer() const {
        return kind == ZPRecordValueKind::group || kind == ZPRecordValueKind::list;
    }
};

/// Raised when a record makes more values or text than its bytes can account for.
class ZPRecordTreeOverflow : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A decoded record as a tree of named values. It is kept flat, each value ahead of those that it
/// holds, so that one tree serves for hundreds of thousands of records without allocating again.
/// The outermost values are those of the record itself.
class ZPRecordTree {
  public:
    /// Empties the tree for a record of so many bytes, which limits how many values and how much
    /// text it may get, see docs/decoders.md.
    void reset(std::size_t recordSize);

    // Adding, in order. A container takes the values that follow until it is closed.
    std::uint32_t openContainer(ZPRecordValueKind kind, std::string_view name, ZPByteRange range);
    /// Closes the container opened last; its bytes are those from its own to `endOffset`.
    void closeContainer(std::uint32_t endOffset);
    /// How many containers are open.
    std::size_t depth() const { return _open.size(); }
    void addNumber(ZPRecordValueKind kind, std::string_view name, std::uint64_t number,
                   ZPByteRange range, std::string_view valueNames = {});
    void addFloat(ZPRecordValueKind kind, std::string_view name, double value, ZPByteRange range);
    void addBits(std::string_view name, std::uint64_t number, unsigned lowestBit, unsigned bitCount,
                 ZPByteRange range, std::string_view valueNames = {});
    /// `kind` is text, in UTF-8, or bytes.
    void addText(ZPRecordValueKind kind, std::string_view name, std::string_view text,
                 ZPByteRange range);

    /// Throws ZPRecordTreeOverflow when so many bytes of text are more than the record may still
    /// make.
    void requireRoom(std::size_t textSize) const;

    bool empty() const { return _values.empty(); }
    /// How many values there are, those within containers included.
    std::uint32_t size() const { return static_cast<std::uint32_t>(_values.size()); }
    const ZPRecordValue &operator[](std::uint32_t place) const { return _values[place]; }
    /// Empty for the values of a list.
    std::string_view name(const ZPRecordValue &value) const {
        return std::string_view(_text).substr(value.nameStart, value.nameLength);
    }
    /// The characters of text and bytes; of a number, the names of its value, if it has any.
    std::string_view text(const ZPRecordValue &value) const {
        return std::string_view(_text).substr(value.textStart, value.textLength);
    }
    static double floatOf(const ZPRecordValue &value);

  private:
    ZPRecordValue &add(ZPRecordValueKind kind, std::string_view name, ZPByteRange range);
    std::uint32_t store(std::string_view text);

    std::vector<ZPRecordValue> _values;
    std::string _text;
    std::vector<std::uint32_t> _open;
    std::size_t _mostValues = 0, _mostText = 0;
};
