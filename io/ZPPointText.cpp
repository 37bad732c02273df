#include "io/ZPPointText.h"

#include "io/ZPSystemLog.h"

#include <charconv>

static std::string shortestText(double value) {
    char text[32]; // the longest, such as -2.2250738585072014e-308, has 24 characters
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string ZPStringFromPoint(double x, double y) {
    return ZPFormat("{%s, %s}", shortestText(x).c_str(), shortestText(y).c_str());
}

std::string ZPStringFromRect(double x, double y, double width, double height) {
    return ZPFormat("{%s, %s}", ZPStringFromPoint(x, y).c_str(),
                    ZPStringFromPoint(width, height).c_str());
}
