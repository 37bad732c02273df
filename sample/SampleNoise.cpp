#include "sample/SampleNoise.h"

#include "sample/SampleRandom.h"

#include <cmath>
#include <cstddef>
#include <utility>

SampleNoise::SampleNoise(std::uint64_t seed) {
    SampleRandom random(seed);
    for (std::size_t i = 0; i < 256; ++i)
        _order[i] = static_cast<std::uint8_t>(i);
    for (std::uint32_t i = 255; i > 0; --i)
        std::swap(_order[i], _order[random.below(i + 1)]);
    for (std::size_t i = 0; i < 256; ++i)
        _order[256 + i] = _order[i];
}

float SampleNoise::gradient(int x, int y, float dx, float dy) const {
    // Sixteen directions, evenly spread, so that no axis shows in the relief.
    static constexpr float kDirections[16][2] = {
        {1, 0},  {0.9239f, 0.3827f},   {0.7071f, 0.7071f},   {0.3827f, 0.9239f},
        {0, 1},  {-0.3827f, 0.9239f},  {-0.7071f, 0.7071f},  {-0.9239f, 0.3827f},
        {-1, 0}, {-0.9239f, -0.3827f}, {-0.7071f, -0.7071f}, {-0.3827f, -0.9239f},
        {0, -1}, {0.3827f, -0.9239f},  {0.7071f, -0.7071f},  {0.9239f, -0.3827f}};
    const std::size_t column = static_cast<std::size_t>(x & 255);
    const auto &d = kDirections[_order[_order[column] + static_cast<std::size_t>(y & 255)] & 15];
    return d[0] * dx + d[1] * dy;
}

float SampleNoise::at(float x, float y) const {
    const float fx = std::floor(x), fy = std::floor(y);
    const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
    const float dx = x - fx, dy = y - fy;
    const float u = dx * dx * dx * (dx * (dx * 6 - 15) + 10);
    const float v = dy * dy * dy * (dy * (dy * 6 - 15) + 10);
    const float a = gradient(ix, iy, dx, dy), b = gradient(ix + 1, iy, dx - 1, dy);
    const float c = gradient(ix, iy + 1, dx, dy - 1), d = gradient(ix + 1, iy + 1, dx - 1, dy - 1);
    const float south = a + (b - a) * u, north = c + (d - c) * u;
    return 1.4f * (south + (north - south) * v);
}

float SampleNoise::layered(float x, float y, int octaves, float gain) const {
    float sum = 0, strength = 1, total = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += strength * at(x, y);
        total += strength;
        strength *= gain;
        // The shift keeps the lattices of the layers from meeting at the origin.
        x = 2 * x + 17.3f;
        y = 2 * y + 31.7f;
    }
    return sum / total;
}

float SampleNoise::ridged(float x, float y, int octaves) const {
    float sum = 0, strength = 1, total = 0, weight = 1;
    for (int i = 0; i < octaves; ++i) {
        float crest = 1 - std::fabs(at(x, y));
        crest *= crest * weight;
        weight = crest > 0.5f ? 1 : 2 * crest;
        sum += strength * crest;
        total += strength;
        strength *= 0.5f;
        x = 2 * x + 17.3f;
        y = 2 * y + 31.7f;
    }
    return sum / total;
}
