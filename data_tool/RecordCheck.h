#pragma once

#include "archive/ZPGorvaneFinding.h"
#include "data_tool/DataSet.h"
#include "data_tool/FileSelection.h"

/// Decodes every selected file of an archive that somebody knows the format of, on all processors:
/// records that do not decode or leave bytes over, and identifiers that are not their entry's. In
/// the order of identifiers; files that cannot be read are left to ZPGorvaneArchiveCheck.
[[nodiscard]] ZPGorvaneFindings checkRecords(const DataSet &dataSet, const Archive &archive,
                                             const WQDecoderSet &decoders,
                                             const FileSelection &selection);
