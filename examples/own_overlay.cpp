// own-overlay <directory with dat files> <picture.png>: a map with something of one's own over it.

#include "map/WQMapper.h"
#include "map/overlay/WQLetteringLibrary.h"

#include <cstdio>

namespace {

constexpr WQPixel kInk = {20, 20, 60, 255};

/// A cross through the middle of the world, and its name.
void drawMiddle(WQDrawing &context, const WQOverlayStyle &style) {
    const WQImagePoint middle = style.imagePoint("0N 0E");
    context.fillRectangle({middle.x - 60, middle.y - 2, 120, 4}, kInk);
    context.fillRectangle({middle.x - 2, middle.y - 60, 4, 120}, kInk);
    const WQText text = style.typesetter.set("The middle", {kWQSansFamilies, 24});
    text.drawAtPoint({middle.x + 12, middle.y + 12}, kInk, context);
}

} // namespace

int main(int argc, char *argv[]) {
    if (argc != 3)
        return 2;
    WQAddLetteringFolder(PLOTTERRA_LETTERING_FOLDER);
    WQClientData client{std::filesystem::path(argv[1])};
    WQMapper mapper(client);
    mapper.updateLandColors(WQMapColorScheme());
    mapper.setScale(2);
    mapper.overlayChoice().others.push_back(drawMiddle);
    ZPError error;
    if (mapper.saveMapToURL(argv[2], &error))
        return 0;
    std::fprintf(stderr, "%s\n", error.description().c_str());
    return 1;
}
