#pragma once

#include "data_tool/DataSet.h"

#include <optional>

/// Decodes the files of a data set, for one thread.
class RecordReader {
  public:
    /// Borrows both.
    RecordReader(const DataSet &dataSet, const WQDecoderSet &decoders)
        : _clientData(dataSet), _decoders(decoders, dataSet.decodingContext()) {}

    /// None where no decoder knows the file's format. The tree is that of the last file.
    [[nodiscard]] std::optional<ZPDecodingResult>
    decode(const Archive &archive, std::uint32_t identifier, std::span<const std::byte> bytes) {
        ZPRecordDecoder *decoder = _decoders.decoderFor(archive.kindOf(identifier));
        if (decoder == nullptr) {
            _tree.reset(0);
            return std::nullopt;
        }
        return ZPDecodeRecord(*decoder, bytes, _tree);
    }
    const ZPRecordTree &tree() const { return _tree; }

    /// Whether a C++ class reads the record's fields, and may have a text for them.
    [[nodiscard]] static bool hasClass(const Archive &archive, std::uint32_t identifier);
    /// The record as text: what its own class makes of it where there is one, else, or where that
    /// is nothing, the tree, which was just decoded. Empty where neither knows the format.
    [[nodiscard]] std::string text(const Archive &archive, std::uint32_t identifier,
                                   std::span<const std::byte> bytes);
    /// What a record that can be decoded has in it that nobody can use; empty where there is
    /// nothing.
    [[nodiscard]] std::string faultInContents(const Archive &archive, std::uint32_t identifier,
                                              std::span<const std::byte> bytes);
    /// The tree as one line of JSON.
    [[nodiscard]] std::string json() const;

  private:
    DataSetClientData _clientData;
    WQDecoders _decoders;
    ZPRecordTree _tree;
};

/// What the record's class makes of it; the tree where that is nothing, or there is no record.
[[nodiscard]] std::string textOfRecord(const ZPGorvaneStoredObject *record,
                                       const ZPRecordTree &tree);
/// What is wrong with a record that was decoded, and where; empty when nothing is.
[[nodiscard]] std::string faultText(const ZPDecodingResult &result);
