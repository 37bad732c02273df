#pragma once

#include "map/overlay/WQOverlayStyle.h"

/// Blanks the box below the title. A row of pixels between the two stays as it is.
void WQDrawTribute(WQDrawing &context, const WQOverlayStyle &style);
