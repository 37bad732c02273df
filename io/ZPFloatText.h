#pragma once

#include <string_view>

/// The float nearest to a number in decimal digits, with a point and an exponent or without, in
/// whichever locale. False, and `value` as it was, where it is too large or too small for one.
bool ZPFloatFromText(std::string_view text, float &value);
