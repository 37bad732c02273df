// For a standard library that reads no floats by std::from_chars, on a system of one locale.

#include "io/ZPFloatText.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <string>

bool ZPFloatFromText(std::string_view text, float &value) {
    errno = 0;
    const float scanned = std::strtof(std::string(text).c_str(), nullptr);
    // A number below the smallest normal one is out of range as well, and can be had.
    if (errno == ERANGE && (scanned == 0 || std::isinf(scanned)))
        return false;
    value = scanned;
    return true;
}
