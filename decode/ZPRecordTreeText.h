#pragma once

#include "decode/ZPRecordTree.h"

/// A single value in one line, safe for a terminal; a container as how many values it has.
[[nodiscard]] std::string ZPRecordValueText(const ZPRecordTree &tree, const ZPRecordValue &value);

/// The whole tree, one line a value, those of a container indented below it. With offsets, each
/// line begins with the place of the value's first byte and how many it has.
[[nodiscard]] std::string ZPRecordTreeText(const ZPRecordTree &tree, bool withOffsets);
