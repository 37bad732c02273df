// The text of a plot file, and with it map coordinates.

#include "fuzz/FuzzTarget.h"

#include "io/ZPText.h"
#include "map/overlay/WQPlotFile.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    FuzzWriteFile("towns.txt", std::as_bytes(std::span(bytes, size)));
    for (const WQMapPoint &point : WQReadPlotFile(FuzzFolder() / "towns.txt")) {
        FuzzExpect(ZPIsValidUTF8(point.label()) && ZPIsValidUTF8(point.type()));
        FuzzExpect(!std::isnan(point.coordinate().x) && !std::isnan(point.coordinate().y));
    }

    // A coordinate prints as a text that reads back to the same place, however far off.
    WQMapLocation location, again;
    const std::string_view text(reinterpret_cast<const char *>(bytes), size);
    if (WQMapCoordinateFromString(text, &location) && std::fabs(location.x) < 1000 &&
        std::fabs(location.y) < 1000) {
        FuzzExpect(WQMapCoordinateFromString(WQStringFromMapCoordinate(location), &again));
        FuzzExpect(std::fabs(again.x - location.x) < 0.06);
        FuzzExpect(std::fabs(again.y - location.y) < 0.06);
    }
    return 0;
}
