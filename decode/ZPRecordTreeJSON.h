#pragma once

#include "decode/ZPRecordTree.h"

/// Appends the tree as one JSON object without line ends. Hexadecimal numbers, identifiers and
/// references are texts such as "0x13000000"; flags an object of `value` and `set`; a number with a
/// name an object of `value` and `name`; bytes a text of hexadecimal digits; floats that JSON does
/// not know are "nan", "inf" and "-inf". A name that comes again in its group gets "#2" and so on.
void ZPAppendRecordTreeJSON(std::string &text, const ZPRecordTree &tree);
