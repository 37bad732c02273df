#include "decode/ZPRecordTreeJSON.h"

#include "io/ZPExtensions.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <charconv>
#include <cmath>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <unordered_map>

namespace {

using Kind = ZPRecordValueKind;

class JSONWriter {
  public:
    explicit JSONWriter(const ZPRecordTree &tree) : _tree(tree) {}

    void writeGroup(std::uint32_t place, std::uint32_t end) {
        _writer.StartObject();
        std::unordered_map<std::string_view, unsigned> timesSeen;
        for (; place < end; place = _tree[place].end) {
            const std::string_view name = _tree.name(_tree[place]);
            const unsigned times = ++timesSeen[name];
            if (times == 1)
                writeKey(name);
            else
                writeKey(std::string(name) + "#" + std::to_string(times));
            writeValue(place);
        }
        _writer.EndObject();
    }

    std::string_view text() const { return {_buffer.GetString(), _buffer.GetSize()}; }

  private:
    void writeValue(std::uint32_t place) {
        const ZPRecordValue &value = _tree[place];
        switch (value.kind) {
        case Kind::group: writeGroup(place + 1, value.end); break;
        case Kind::list:
            _writer.StartArray();
            for (++place; place < value.end; place = _tree[place].end)
                writeValue(place);
            _writer.EndArray();
            break;
        case Kind::unsignedInteger:
        case Kind::signedInteger:
        case Kind::hexadecimal:
        case Kind::bits: writeNamedNumber(value); break;
        case Kind::boolean: _writer.Bool(value.number != 0); break;
        case Kind::float32: writeFloat(static_cast<float>(ZPRecordTree::floatOf(value))); break;
        case Kind::float64: writeFloat(ZPRecordTree::floatOf(value)); break;
        case Kind::flags: writeFlags(value); break;
        case Kind::identifier:
        case Kind::reference: writeNumber(value); break;
        case Kind::text: writeText(_tree.text(value)); break;
        case Kind::bytes: {
            const std::string_view bytes = _tree.text(value);
            writeText(ZPHexString(std::as_bytes(std::span(bytes.data(), bytes.size()))));
            break;
        }
        }
    }

    void writeNumber(const ZPRecordValue &value) {
        if (value.kind == Kind::signedInteger)
            _writer.Int64(static_cast<std::int64_t>(value.number));
        else if (value.kind == Kind::unsignedInteger || value.kind == Kind::bits)
            _writer.Uint64(value.number);
        else
            writeText(ZPFormat("0x%0*llx", static_cast<int>(std::min(value.range.length, 8u) * 2),
                               static_cast<unsigned long long>(value.number)));
    }

    void writeNamedNumber(const ZPRecordValue &value) {
        if (_tree.text(value).empty())
            return writeNumber(value);
        _writer.StartObject();
        _writer.Key("value");
        writeNumber(value);
        _writer.Key("name");
        writeText(_tree.text(value));
        _writer.EndObject();
    }

    void writeFlags(const ZPRecordValue &value) {
        _writer.StartObject();
        _writer.Key("value");
        writeNumber(value);
        _writer.Key("set");
        _writer.StartArray();
        if (const std::string_view names = _tree.text(value); !names.empty())
            for (const std::string_view name : ZPSplitText(names, '\n'))
                writeText(name);
        _writer.EndArray();
        _writer.EndObject();
    }

    /// In its own precision's shortest digits, which the library has for doubles only.
    template <class Float>
    void writeFloat(Float value) {
        char digits[32];
        const std::string_view text(
            digits,
            static_cast<std::size_t>(std::to_chars(digits, std::end(digits), value).ptr - digits));
        if (std::isfinite(value))
            _writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
        else
            writeText(text);
    }

    void writeText(std::string_view text) {
        _writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
    void writeKey(std::string_view name) {
        _writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
    }

    const ZPRecordTree &_tree;
    rapidjson::StringBuffer _buffer;
    rapidjson::Writer<rapidjson::StringBuffer> _writer{_buffer};
};

} // namespace

void ZPAppendRecordTreeJSON(std::string &text, const ZPRecordTree &tree) {
    JSONWriter writer(tree);
    writer.writeGroup(0, tree.size());
    text += ZPPrintableJSON(writer.text());
}
