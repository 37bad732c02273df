#pragma once

#include "decode/ZPRecordTree.h"
#include "io/ZPDataCursor.h"

#include <span>

/// Builds a record's tree while a decoder reads the record through a cursor, and notes for each
/// value where it stood: a value's bytes are those that were read since the value before it, or, if
/// none were read, the bytes of that value. So the parts of one word all point to the word.
///
///     output.hexadecimal("unknown1", cursor.readLittleInt32());
///
/// Decoders in C++ use it as it is, those in Lua through their `out`.
class ZPFieldOutput {
  public:
    /// Borrows both. The tree is reset.
    ZPFieldOutput(const ZPDataCursor &cursor, ZPRecordTree &tree) : _cursor(cursor), _tree(tree) {
        tree.reset(cursor.data().size());
    }

    const ZPRecordTree &tree() const { return _tree; }

    using Name = std::string_view;
    using Kind = ZPRecordValueKind;

    void number(Name name, std::uint64_t value, std::string_view valueName = {}) {
        _tree.addNumber(Kind::unsignedInteger, name, value, takeRange(), valueName);
    }
    void signedNumber(Name name, std::int64_t value, std::string_view valueName = {}) {
        _tree.addNumber(Kind::signedInteger, name, static_cast<std::uint64_t>(value), takeRange(),
                        valueName);
    }
    void boolean(Name name, bool value) {
        _tree.addNumber(Kind::boolean, name, value, takeRange());
    }
    void float32(Name name, float value) {
        _tree.addFloat(Kind::float32, name, static_cast<double>(value), takeRange());
    }
    void float64(Name name, double value) {
        _tree.addFloat(Kind::float64, name, value, takeRange());
    }
    void hexadecimal(Name name, std::uint64_t value, std::string_view valueName = {}) {
        _tree.addNumber(Kind::hexadecimal, name, value, takeRange(), valueName);
    }
    /// `setNames`: the names of the bits that are set, as they are to be shown.
    void flags(Name name, std::uint64_t value, std::string_view setNames) {
        _tree.addNumber(Kind::flags, name, value, takeRange(), setNames);
    }
    /// Bits `lowestBit` to `lowestBit + bitCount - 1` of a number; 1 to 64 bits that it has.
    void bits(Name name, std::uint64_t word, unsigned lowestBit, unsigned bitCount,
              std::string_view valueName = {}) {
        _tree.addBits(name, bitsOf(word, lowestBit, bitCount), lowestBit, bitCount, takeRange(),
                      valueName);
    }
    void identifier(std::uint32_t value) {
        _tree.addNumber(Kind::identifier, "identifier", value, takeRange());
    }
    void reference(Name name, std::uint32_t identifier) {
        _tree.addNumber(Kind::reference, name, identifier, takeRange());
    }
    void text(Name name, std::string_view text) {
        _tree.addText(Kind::text, name, text, takeRange());
    }
    void bytes(Name name, std::string_view bytes) {
        _tree.addText(Kind::bytes, name, bytes, takeRange());
    }
    /// A group of x, y, z and w, as many as there are values.
    void vector(Name name, std::span<const float> components);
    void vector(Name name, std::initializer_list<float> components) {
        vector(name, std::span(components.begin(), components.size()));
    }

    /// A group or a list of what `addValues` adds. Bytes read just before, such as a count, belong
    /// to it.
    template <class AddValues>
    void group(Name name, AddValues addValues) {
        container(Kind::group, name, addValues);
    }
    template <class AddValues>
    void list(Name name, AddValues addValues) {
        container(Kind::list, name, addValues);
    }
    /// The two halves of the above, for who cannot pass a function.
    void openContainer(Kind kind, Name name);
    void closeContainer() { _tree.closeContainer(position()); }

    /// What was read or passed over so far, such as padding, belongs to no value.
    void skipToCursor() { _mark = position(); }

    static constexpr std::uint64_t bitsOf(std::uint64_t word, unsigned lowestBit,
                                          unsigned bitCount) {
        return word >> lowestBit & ~std::uint64_t{0} >> (64 - bitCount);
    }

  private:
    template <class AddValues>
    void container(Kind kind, Name name, AddValues &addValues) {
        openContainer(kind, name);
        addValues();
        closeContainer();
    }
    std::uint32_t position() const { return static_cast<std::uint32_t>(_cursor.offset()); }
    ZPByteRange takeRange() {
        if (position() != _mark) {
            // A decoder that went back reads on from there.
            const std::uint32_t start = _mark < position() ? _mark : position();
            _last = {start, position() - start};
            _mark = position();
        }
        return _last;
    }

    const ZPDataCursor &_cursor;
    ZPRecordTree &_tree;
    /// Up to here, bytes belong to values that were added.
    std::uint32_t _mark = 0;
    ZPByteRange _last;
};
