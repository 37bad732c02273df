#pragma once

#include "io/ZPDataCursor.h"
#include "map/land/WQLandGrid.h"

#include <array>

/// What is known of each land block, by its number 0xXXYY; 0 where there is nothing.
using WQBlockFlags = std::array<std::uint8_t, 0x10000>;

/// The land as a page carries it: deflated bytes (no wrapper), made on all processors. Undone by
/// web/page/unpack.js. With n = 2041, points row by row from the south, each row from the west:
///
///     n x n bytes   height indexes, each less its prediction (modulo 256)
///     n x n bytes   low bytes of the terrain words
///     n x n bytes   high bytes of the terrain words
///     64 KiB        flags of the land blocks, by number, bits as in WQLandPoint::Flag
///
/// A height is predicted from its neighbours w to the west, s to the south and d between them: the
/// median of w, s and w + s - d. Outside the world all are 0. With an older land four more such
/// parts follow, which are all but empty where little changed:
///
///     n x n bytes   older height index less the newer one (modulo 256)
///     n x n bytes   low bytes of older and newer terrain word, exclusive or
///     n x n bytes   their high bytes
///     64 KiB        flags of the older land blocks
struct WQPackableLand {
    const WQLandGrid &grid;
    const WQBlockFlags &blocks;
};
ZPData WQPackLand(const WQPackableLand &land, const WQPackableLand *olderLand);
