#pragma once

#include "map/land/WQLandGrid.h"
#include "map/overlay/WQDrawing.h"

/// Draws a red disc on every land point whose terrain word has both road bits set; for a drawing at
/// scale 1.
void WQHighlightLowBits(const WQLandGrid &landGrid, WQDrawing &context);
