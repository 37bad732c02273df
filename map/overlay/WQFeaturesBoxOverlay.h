#pragma once

#include "map/overlay/WQOverlayStyle.h"

/// Draws a blank box with a black outline, for a list of features.
void WQDrawFeaturesBox(WQDrawing &context, const WQOverlayStyle &style);
