// For systems that keep what is read in memory of their own.

#include "archive/ZPReadAhead.h"

void ZPReadAhead(int, std::size_t) {}
