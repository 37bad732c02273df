#include "sample/SampleClimate.h"

#include "sample/SampleParallel.h"
#include "sample/SampleRandom.h"
#include "sample/SampleSmooth.h"

#include <algorithm>

SampleClimate::SampleClimate(std::uint64_t seed, const SampleLandform &landform)
    : _noise(SampleHash(seed, 10)), _wetness(4) {
    // The wind blows from the west: it gathers water over the sea and drops it over land, most of
    // it where the ground rises.
    const int side = _wetness.side();
    SampleForEachLine(side, [&](int row) {
        float carried = 0.9f, previous = 0;
        for (int column = 0; column < side; ++column) {
            const float x = static_cast<float>(4 * column), y = static_cast<float>(4 * row);
            const bool sea = landform.sea().nearest(x, y) != 0;
            const float height = landform.height().nearest(x, y);
            if (sea) {
                carried += (1.0f - carried) * 0.03f;
            } else {
                const float rise = std::max(0.0f, height - previous);
                carried -= carried * std::min(0.4f, 0.0032f + 0.0012f * rise);
                carried += (0.35f - carried) * 0.0015f;
            }
            previous = sea ? 0 : height;
            _wetness(column, row) = carried;
        }
    });
    for (int pass = 0; pass < 2; ++pass)
        SampleSmooth(_wetness, 7, 14);
    // Weather is no straight line: read the rows from places that are bent north and south.
    const SampleGrid<float> rows = _wetness;
    SampleForEachLine(side, [&](int row) {
        for (int column = 0; column < side; ++column) {
            const float x = static_cast<float>(4 * column), y = static_cast<float>(4 * row);
            const float bend = 130 * _noise.layered(x / 190 + 87, y / 190 + 29, 3);
            // A belt of dry air lies over the south, as under the tropics.
            const float south = y + 190 * _noise.layered(x / 260 + 5, y / 260 + 13, 3);
            const float belt = 0.17f * SampleStep(800, 440, south) * SampleStep(0, 330, south);
            _wetness(column, row) = std::clamp(0.06f + 0.95f * rows.linear(x, y + bend) - belt +
                                                   0.30f * _noise.layered(x / 170, y / 170, 5),
                                               0.0f, 1.0f);
        }
    });
}

float SampleClimate::warmthAt(float x, float y) const {
    return 1.02f - y / 2040 + 0.10f * _noise.layered(x / 210 + 37, y / 210 + 71, 4);
}
