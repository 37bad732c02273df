#include "io/ZPFloatText.h"

#include <charconv>

bool ZPFloatFromText(std::string_view text, float &value) {
    return std::from_chars(text.data(), text.data() + text.size(), value).ec !=
           std::errc::result_out_of_range;
}
