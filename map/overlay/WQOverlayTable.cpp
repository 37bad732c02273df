#include "map/overlay/WQOverlayTable.h"

#include "io/ZPStage.h"
#include "map/overlay/WQCompassOverlay.h"
#include "map/overlay/WQGridOverlay.h"
#include "map/overlay/WQMarkerOverlay.h"
#include "map/overlay/WQTitleOverlay.h"
#include "map/overlay/WQTributeOverlay.h"

#include <algorithm>

namespace {

struct Overlay {
    bool (*isChosen)(const WQOverlayChoice &choice);
    void (*draw)(WQDrawing &context, const WQOverlayStyle &style);
};

bool hasGrid(const WQOverlayChoice &choice) {
    return choice.grid;
}
bool hasMarkers(const WQOverlayChoice &choice) {
    return choice.coordinates.has_value();
}
bool hasOthers(const WQOverlayChoice &choice) {
    return !choice.others.empty();
}

void drawOthers(WQDrawing &context, const WQOverlayStyle &style) {
    for (const auto &draw : style.choice.others)
        draw(context, style);
}

/// In the order of drawing. A new overlay is a row here, files of its own and a wish in
/// WQOverlayChoice.
constexpr Overlay kOverlays[] = {
    {hasGrid, WQDrawGridLines}, {hasGrid, WQDrawCompass},    {hasGrid, WQDrawTitle},
    {hasGrid, WQDrawTribute},   {hasMarkers, WQDrawMarkers}, {hasOthers, drawOthers},
};

} // namespace

std::unique_ptr<const WQDrawing> WQDrawOverlays(const WQOverlayStyle &style) {
    const auto isChosen = [&](const Overlay &overlay) { return overlay.isChosen(style.choice); };
    if (std::ranges::none_of(kOverlays, isChosen))
        return nullptr;
    const ZPStage stage("overlays");
    auto drawing = std::make_unique<WQDrawing>(style.scale);
    for (const Overlay &overlay : kOverlays)
        if (isChosen(overlay))
            overlay.draw(*drawing, style);
    return drawing;
}
