#pragma once

#include "map/overlay/WQOverlayStyle.h"

/// Draws the compass rose, about 32.5N 87.5E; as large at every scale.
void WQDrawCompass(WQDrawing &context, const WQOverlayStyle &style);
