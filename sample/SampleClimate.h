#pragma once

#include "sample/SampleGrid.h"
#include "sample/SampleLandform.h"
#include "sample/SampleNoise.h"

#include <cstdint>

/// Warmth and wetness of the world, both from 0 to 1: cold in the north and on heights, dry in the
/// lee of the mountains.
class SampleClimate {
  public:
    SampleClimate(std::uint64_t seed, const SampleLandform &landform);

    /// At sea level; height cools on top of this.
    float warmthAt(float x, float y) const;
    float wetnessAt(float x, float y) const { return _wetness.linear(x, y); }

  private:
    SampleNoise _noise;
    SampleGrid<float> _wetness;
};
