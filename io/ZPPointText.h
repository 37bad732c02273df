#pragma once

#include <string>

/// `{x, y}`, each number in the shortest form that reads back as the same value.
std::string ZPStringFromPoint(double x, double y);

/// `{{x, y}, {width, height}}`.
std::string ZPStringFromRect(double x, double y, double width, double height);
