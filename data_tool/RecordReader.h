#pragma once

#include "data_tool/DataSet.h"

#include <optional>

/// Decodes the files of a data set, for one thread.
class RecordReader {
  public:
    /// Borrows both.
    RecordReader(const DataSet &dataSet, const WQDecoderSet &decoders)
        : _clientData(dataSet), _decoders(decoders, dataSet.decodingContext()) {}

    /// None where nobody knows the file's format. The tree is that of the last file.
    [[nodiscard]] std::optional<ZPDecodingResult>
    decode(const Archive &archive, std::uint32_t identifier, std::span<const std::byte> bytes) {
        ZPRecordDecoder *decoder = _decoders.decoderFor(archive.kindOf(identifier));
        if (decoder == nullptr)
            return std::nullopt;
        return ZPDecodeRecord(*decoder, bytes, _tree);
    }
    const ZPRecordTree &tree() const { return _tree; }

    /// The record as text: the dump of its own class where a C++ class reads its fields, else the
    /// tree, which was just decoded.
    [[nodiscard]] std::string text(const Archive &archive, std::uint32_t identifier,
                                   std::span<const std::byte> bytes);
    /// The tree as one line of JSON.
    [[nodiscard]] std::string json() const;

  private:
    DataSetClientData _clientData;
    WQDecoders _decoders;
    ZPRecordTree _tree;
};

/// What is wrong with a record that was decoded, and where; empty when nothing is.
[[nodiscard]] std::string faultText(const ZPDecodingResult &result);
