#pragma once

#include "map/overlay/WQOverlayStyle.h"

/// Blanks a box in the north-east and letters the world's name and the map's credit there, as large
/// at every scale.
void WQDrawTitle(WQDrawing &context, const WQOverlayStyle &style);
