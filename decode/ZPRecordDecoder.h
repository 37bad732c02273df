#pragma once

#include "decode/ZPFieldOutput.h"

#include <optional>

/// Decodes records of one kind into trees. One decoder works in one thread at a time.
class ZPRecordDecoder {
  public:
    virtual ~ZPRecordDecoder() = default;
    /// Reads the whole record. Throws ZPRangeException, ZPGenericException or ZPRecordTreeOverflow
    /// where its bytes do not make one.
    virtual void decode(ZPDataCursor &cursor, ZPFieldOutput &output) = 0;
};

struct ZPDecodingResult {
    struct Fault {
        std::string message;
        /// How far the cursor had come, in bytes.
        std::uint32_t offset;
    };
    std::optional<Fault> fault;
    /// Bytes that were not read by a decoder without a fault.
    std::uint64_t bytesLeft = 0;
};

/// Decodes a record into `tree`. After a fault the tree holds what came before it.
[[nodiscard]] ZPDecodingResult
ZPDecodeRecord(ZPRecordDecoder &decoder, std::span<const std::byte> record, ZPRecordTree &tree);
