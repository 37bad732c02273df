#pragma once

#include "map/land/WQLandGrid.h"

#include <string>

/// By which a page knows its land again: 16 hexadecimal digits of what all points are, whatever
/// title, places or older land the page has. Made on all processors.
std::string WQLandDigest(const WQLandGrid &grid);
