#pragma once

#include <array>
#include <cstdint>

/// Gradient noise over the plane, the same for a seed everywhere; values lie within -1 to 1.
class SampleNoise {
  public:
    explicit SampleNoise(std::uint64_t seed);

    float at(float x, float y) const;
    /// `octaves` layers, each at twice the frequency and `gain` times the strength of the one
    /// before.
    float layered(float x, float y, int octaves, float gain = 0.5f) const;
    /// 0 to 1, with sharp crests where the noise crosses zero.
    float ridged(float x, float y, int octaves) const;

  private:
    float gradient(int x, int y, float dx, float dy) const;

    std::array<std::uint8_t, 512> _order;
};

/// 0 below `low`, 1 above `high`, a smooth slope between.
inline float SampleStep(float low, float high, float value) {
    float t = (value - low) / (high - low);
    t = t < 0 ? 0 : t > 1 ? 1 : t;
    return t * t * (3 - 2 * t);
}
