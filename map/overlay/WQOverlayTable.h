#pragma once

#include "map/overlay/WQOverlayStyle.h"

/// Draws all overlays that the style's choice asks for, each over those before it. Null where there
/// are none.
[[nodiscard]] std::unique_ptr<const WQDrawing> WQDrawOverlays(const WQOverlayStyle &style);
