#pragma once

#include "map/overlay/WQOverlayStyle.h"

/// Blanks three areas that hold no real landscape and draws lines every five map units, a black and
/// white frame along the edges and the lines' numbers.
void WQDrawGridLines(WQDrawing &context, const WQOverlayStyle &style);
